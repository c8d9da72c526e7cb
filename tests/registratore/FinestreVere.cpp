#include "FinestreVere.hpp"

#include "FinestraFinta.hpp"
#include "platform/qt/QtDesktop.hpp"

#include <QApplication>
#include <QTest>
#include <QTimer>

namespace lumoscad::test {

FinestreVere::FinestreVere() : vero_(qt::CreateDesktop()) {}

void FinestreVere::Prossimo() {
  if (!copioni.empty()) {
    Recita(copioni.front());
    copioni.pop_front();
  }
}

void FinestreVere::ShowBox(std::string_view testo, std::string_view titolo) {
  QTimer risponditore;
  risponditore.setInterval(5);
  QObject::connect(&risponditore, &QTimer::timeout, &risponditore, [] {
    auto* aperta = QApplication::activeModalWidget();
    if (aperta != nullptr && aperta->objectName() == "MostraMessaggio") {
      QTest::keyClick(aperta, Qt::Key_Return);
    }
  });
  risponditore.start();
  vero_->ShowBox(testo, titolo);
}

void FinestreVere::ShowList(ListWindow& finestra) {
  Prossimo();
  vero_->ShowList(finestra);
}

void FinestreVere::ShowSingleItem(SingleItemWindow& finestra) {
  Prossimo();
  vero_->ShowSingleItem(finestra);
}

} // namespace lumoscad::test
