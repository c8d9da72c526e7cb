#include "platform/qt/SaveDialog.hpp"

#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QStringList>

namespace lumoscad::qt {

QString AskWhereToSave(QDialog& above, const QString& name, const QString& title, const QList<SaveKind>& kinds,
                       const QString& file) {
  QFileDialog dialog(&above, title);
  dialog.setObjectName(name);
  dialog.setOption(QFileDialog::DontUseNativeDialog);
  dialog.setOption(QFileDialog::DontConfirmOverwrite); // it would ask in another language
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
  QStringList filters;
  for (const SaveKind& kind : kinds) {
    filters.append(QStringLiteral("%1 (*.%2)").arg(kind.name, kind.extension));
  }
  dialog.setNameFilters(filters);
  dialog.setDefaultSuffix(kinds.constFirst().extension);
  QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, [&](const QString& filter) {
    dialog.setDefaultSuffix(kinds.at(filters.indexOf(filter)).extension);
  });
  dialog.setLabelText(QFileDialog::LookIn, QStringLiteral("Cartella:"));
  dialog.setLabelText(QFileDialog::FileName, QStringLiteral("Nome:"));
  dialog.setLabelText(QFileDialog::FileType, QStringLiteral("Tipo:"));
  dialog.setLabelText(QFileDialog::Accept, QStringLiteral("Salva"));
  dialog.setLabelText(QFileDialog::Reject, QStringLiteral("Annulla"));
  dialog.selectFile(file);
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
    return {};
  }
  QString path = dialog.selectedFiles().constFirst();
  if (!QFileInfo::exists(path)) {
    return path;
  }
  QMessageBox question(QMessageBox::NoIcon, title,
                       QFileInfo(path).fileName() + QStringLiteral(" esiste già. Sostituirlo?"), QMessageBox::NoButton,
                       &above);
  const QPushButton* yes = question.addButton(QStringLiteral("Sostituisci"), QMessageBox::AcceptRole);
  question.setDefaultButton(question.addButton(QStringLiteral("Annulla"), QMessageBox::RejectRole));
  question.exec();
  return question.clickedButton() == yes ? path : QString();
}

} // namespace lumoscad::qt
