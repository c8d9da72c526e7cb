#include "platform/qt/ListReporter.hpp"

#include "platform/qt/GestureKeys.hpp"
#include "platform/qt/ListChanges.hpp"
#include "platform/qt/ListEffects.hpp"
#include "platform/qt/ListParts.hpp"
#include "platform/qt/ListPdf.hpp"
#include "platform/qt/Look.hpp"
#include "platform/qt/SaveDialog.hpp"
#include "platform/qt/Texts.hpp"

#include <QBoxLayout>
#include <QClipboard>
#include <QDialog>
#include <QFrame>
#include <QGuiApplication>
#include <QMimeData>
#include <QPointer>
#include <QSaveFile>
#include <QScreen>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace lumoscad::qt {

ListReporter::ListReporter(QDialog& dialog, ListWindow& list, ListParts& parts, Run gesture)
    : QObject(&dialog), dialog_(dialog), list_(list), parts_(parts), report_(*list.Report()),
      gesture_(std::move(gesture)), copy(Action(Gesture::Copy, &ListReporter::Copy)),
      paste(Action(Gesture::Paste, &ListReporter::Paste)), save(Action(Gesture::Save, &ListReporter::Save)) {
  Action(Gesture::Effects, &ListReporter::ToggleEffects);
  Action(Gesture::Changes, &ListReporter::ToggleChanges);
  // Not when it is clicked: assistive tools let it in and out without a click.
  connect(parts_.foot.changes, &QToolButton::toggled, this, [this](bool open) {
    if (open != (changes_ != nullptr && !changes_->isHidden())) {
      ToggleChanges();
    }
  });
}

QAction* ListReporter::Action(Gesture gesture, void (ListReporter::*action)()) {
  return ActionFor(dialog_, gesture, [this, action] { (this->*action)(); });
}

void CopyRows(ListReport& report) {
  const CopiedRows rows = report.Copia();
  auto* data = new QMimeData;
  data->setText(Text(rows.text));
  data->setHtml(Text(rows.html));
  QGuiApplication::clipboard()->setMimeData(data);
}

void ListReporter::Copy() {
  gesture_([this] { CopyRows(report_); });
}

void ListReporter::Paste() {
  const std::string text = Utf8(QGuiApplication::clipboard()->text());
  gesture_([&] { report_.Incolla(text, parts_.table->currentIndex().column()); });
}

void ListReporter::Save() {
  const QPointer<ListReporter> here(this);
  const QString path = AskWhereToSave(dialog_, QStringLiteral("SaveList"), QStringLiteral("Salva l'elenco"),
                                      {{QStringLiteral("Foglio di calcolo"), QStringLiteral("csv")},
                                       {QStringLiteral("Documento PDF"), QStringLiteral("pdf")}},
                                      QStringLiteral("elenco"));
  if (here && !path.isEmpty()) {
    SaveAs(path);
  }
}

void ListReporter::SaveAs(const QString& path) {
  gesture_([this, &path] {
    const bool pdf = path.endsWith(QStringLiteral(".pdf"), Qt::CaseInsensitive);
    const QByteArray bytes = pdf ? PdfOf(report_.Stampa()) : QByteArray::fromStdString(report_.Csv());
    QSaveFile file(path);
    const bool saved = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
    report_.Avvisa(saved ? Utf8(QStringLiteral("Salvato: ") + path)
                         : Utf8(QStringLiteral("Non salvato: ") + file.errorString()));
  });
}

void ListReporter::ToggleChanges() {
  if (changes_ == nullptr) {
    changes_ = new ListChanges(report_, &dialog_);
    changes_->takenBack = [this](const std::vector<std::size_t>& places) {
      gesture_([&] { report_.RiprendiFrasi(places); });
    };
    auto* stack = static_cast<QBoxLayout*>(dialog_.layout());
    stack->insertWidget(stack->count() - 1, changes_);
    look::Dress(dialog_);
    changes_->hide();
  }
  const bool open = changes_->isHidden() && report_.QuanteFrasi() > 0;
  if (open) {
    changes_->Reload();
  } else if (changes_->hasFocus()) {
    parts_.table->setFocus();
  }
  changes_->setVisible(open);
  parts_.foot.changes->setChecked(open);
  parts_.foot.changes->setArrowType(open ? Qt::DownArrow : Qt::RightArrow);
  if (open) {
    changes_->setFocus();
  }
}

void ListReporter::BuildEffects() {
  if (effects_ != nullptr) {
    return;
  }
  effects_ = new ListEffects(&dialog_);
  effects_->chosen = [this](std::size_t group, std::size_t bar) {
    gesture_([&] { report_.ScegliDietro(group, bar); });
  };
  auto* stack = static_cast<QBoxLayout*>(dialog_.layout());
  const int place = stack->indexOf(parts_.picScadenzeBanche);
  auto* row = new QHBoxLayout;
  row->setSpacing(0);
  stack->removeWidget(parts_.picScadenzeBanche);
  row->addWidget(parts_.picScadenzeBanche, 1);
  row->addWidget(effects_);
  stack->insertLayout(place, row, 1);
  look::Dress(dialog_);
  effects_->hide();
}

void ListReporter::OpenEffects(bool widen) {
  BuildEffects();
  ShowEffects();
  effects_->show();
  const QScreen* screen = dialog_.screen();
  if (screen == nullptr || dialog_.isMaximized()) {
    return;
  }
  widthAfter_ = dialog_.width();
  widthBefore_ = widthAfter_ - effects_->width();
  if (widen) {
    widthBefore_ = widthAfter_;
    dialog_.resize(std::min(widthBefore_ + effects_->width(), screen->availableSize().width()), dialog_.height());
    widthAfter_ = dialog_.width();
  }
}

void ListReporter::CloseEffects() {
  if (effects_ == nullptr || effects_->isHidden()) {
    return;
  }
  if (effects_->hasFocus()) {
    parts_.table->setFocus();
  }
  effects_->hide();
  if (dialog_.width() == widthAfter_ && !dialog_.isMaximized()) {
    dialog_.resize(widthBefore_, dialog_.height());
  }
}

void ListReporter::ToggleEffects() {
  BuildEffects();
  const bool open = effects_->isHidden();
  if (open) {
    OpenEffects(true);
    effects_->setFocus();
  } else {
    CloseEffects();
  }
  if (effectsToggled) {
    effectsToggled(open);
  }
}

void ListReporter::ShowEffects() {
  effects_->Show(report_.Effetto());
}

void ListReporter::ShowFoot() {
  QStringList texts;
  for (const std::string& part : report_.Piede()) {
    texts.append(Text(part));
  }
  parts_.foot.effect->SetWholeText(QStringLiteral("·  ") + texts.join(QStringLiteral("  ·  ")));
  const std::size_t changes = report_.QuanteFrasi();
  parts_.foot.changes->setText(QStringLiteral("Variazioni (%1)").arg(changes));
  parts_.foot.changes->setVisible(changes > 0);
  if (changes_ != nullptr && !changes_->isHidden()) {
    if (changes == 0) {
      ToggleChanges();
    } else {
      changes_->Reload();
    }
  }
}

void ListReporter::Follow(const ListState& state) {
  const bool changed = std::exchange(content_, state.content) != state.content;
  const bool chosen = std::exchange(selection_, state.selection) != state.selection;
  const bool ordered = std::exchange(order_, state.order) != state.order;
  if (changed || chosen || ordered || std::exchange(first_, false)) {
    ShowFoot();
    const bool filtered =
        ordered && list_.Gestures() != nullptr &&
        std::exchange(behind_, list_.Gestures()->Filtro().behind) != list_.Gestures()->Filtro().behind;
    if (effects_ != nullptr && !effects_->isHidden() && (changed || filtered)) {
      ShowEffects();
    }
  }
  parts_.foot.notice->SetWholeText(Text(state.notice));
  parts_.foot.notice->setVisible(!state.notice.empty());
}

} // namespace lumoscad::qt
