#pragma once

#include <QList>
#include <QString>

class QDialog;

namespace lumoscad::qt {

/// A kind of file that something can be saved as.
struct SaveKind {
  QString name;      ///< "Documento PDF"
  QString extension; ///< "pdf"
};

/// Asks in Italian where something is to be saved, and whether a file that is there is to be replaced; empty where the
/// person does not want it. `name` is that of the dialog, `file` what the file is called to begin with.
[[nodiscard]] QString AskWhereToSave(QDialog& above, const QString& name, const QString& title,
                                     const QList<SaveKind>& kinds, const QString& file);

} // namespace lumoscad::qt
