#include "ScadenzarioAperto.hpp"

#include "platform/qt/QtDesktop.hpp"

#include <QApplication>
#include <QLabel>
#include <QTest>

namespace lumoscad::test {
namespace {

/// Gives the open window the keyboard back after a message, where no window manager does it.
bool RiprendiTastiera() {
  if (QApplication::focusWidget() != nullptr) {
    return true;
  }
  QWidget* const aperta = QApplication::activeModalWidget();
  if (aperta == nullptr) {
    return false;
  }
  aperta->activateWindow();
  return QTest::qWaitFor([] { return QApplication::focusWidget() != nullptr; });
}

} // namespace

ScadenzarioAperto::ScadenzarioAperto() : desktop(qt::CreateDesktop()) {
  ActiveServices().desktop = [this]() -> Desktop& { return *desktop; };
  form.LabelDescPartita = "2006 152";
  form.LabelDescCliFor = "Oleificio Santa Chiara";
  form.Aggiungi("31/03/2006", "31/03/2006", "1.250,00");
  form.Aggiungi("30/04/2006", "30/04/2006", "1.250,00");
  form.Aggiungi("31/05/2006", "15/05/2006", "980,50");
  form.Aggiungi("30/06/2006", "30/06/2006", "12.400,00");
  risponditore_.setInterval(5);
  QObject::connect(&risponditore_, &QTimer::timeout, &risponditore_, [this] { RispondiAlBox(); });
}

void ScadenzarioAperto::RispondiAlBox() {
  auto* aperta = QApplication::activeModalWidget();
  if (aperta != nullptr && aperta->objectName() == "MostraMessaggio") {
    box.push_back(Trova<QLabel>(*aperta, "lblMessaggio").text().toStdString());
    if (alBox) {
      alBox();
    }
    QTest::keyClick(aperta, Qt::Key_Return);
  }
}

std::string ScadenzarioAperto::Confermata(const std::string& modo) {
  confermate.push_back(modo);
  return esito();
}

std::string ScadenzarioAperto::Mostra(const std::function<void(QDialog&)>& copione) {
  risponditore_.start();
  Recita(copione);
  return form.VisualizzaScad();
}

std::string ScadenzarioAperto::MostraExtra(const std::function<void(QDialog&)>& copione) {
  risponditore_.start();
  Recita(copione);
  return form.VisualizzaExtra();
}

QTableView& ScadenzarioAperto::ListaScad(QDialog& finestra) {
  return Trova<QTableView>(finestra, "LWScad");
}

void ScadenzarioAperto::Tasto(Qt::Key tasto, Qt::KeyboardModifiers con) {
  ASSERT_TRUE(RiprendiTastiera());
  QTest::keyClick(QApplication::focusWidget(), tasto, con);
}

void ScadenzarioAperto::Scrivi(const QString& testo) {
  ASSERT_TRUE(RiprendiTastiera());
  QTest::keyClicks(QApplication::focusWidget(), testo);
}

void ScadenzarioAperto::Premi(QDialog& finestra, const char* nome) {
  QTest::mouseClick(&Trova<QWidget>(finestra, nome), Qt::LeftButton);
}

std::string ScadenzarioAperto::Nuova(std::size_t riga) const {
  return std::string(form.griglia().righe.Testo(riga, FormLumoScad::NuovaScadenza));
}

int ScadenzarioAperto::Spuntate() const {
  int quante = 0;
  for (std::size_t riga = 0; riga < form.griglia().righe.Quante(); ++riga) {
    quante += form.griglia().righe.Spuntata(riga, 0) ? 1 : 0;
  }
  return quante;
}

} // namespace lumoscad::test
