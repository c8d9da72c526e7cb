#include "FinestreVere.hpp"

#include "FinestraFinta.hpp"
#include "platform/qt/QtDesktop.hpp"

#include <QApplication>
#include <QTest>
#include <QTimer>

namespace lumoscad::prova {

FinestreVere::FinestreVere() : vero_(qt::CreaDesktop()) {}

void FinestreVere::Prossimo() {
  if (!copioni.empty()) {
    Recita(copioni.front());
    copioni.pop_front();
  }
}

void FinestreVere::MostraBox(std::string_view testo, std::string_view titolo) {
  QTimer risponditore;
  risponditore.setInterval(5);
  QObject::connect(&risponditore, &QTimer::timeout, &risponditore, [] {
    auto* aperta = QApplication::activeModalWidget();
    if (aperta != nullptr && aperta->objectName() == "MostraMessaggio") {
      QTest::keyClick(aperta, Qt::Key_Return);
    }
  });
  risponditore.start();
  vero_->MostraBox(testo, titolo);
}

void FinestreVere::MostraElenco(FinestraElenco& finestra) {
  Prossimo();
  vero_->MostraElenco(finestra);
}

void FinestreVere::MostraScadenzario(FinestraScadenzario& finestra) {
  Prossimo();
  vero_->MostraScadenzario(finestra);
}

} // namespace lumoscad::prova
