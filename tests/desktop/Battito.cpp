#include "Battito.hpp"

#include <QApplication>

#include <algorithm>
#include <utility>

namespace lumoscad::test {
namespace {

constexpr int Intervallo = 5; // milliseconds
/// Turns between two gestures, so that what a gesture leaves to be painted counts as its own.
constexpr int GiriQuieti = 4;

} // namespace

Battito::Battito(std::vector<Passo> passi) : passi_(std::move(passi)) {
  timer_.setTimerType(Qt::PreciseTimer);
  timer_.setInterval(Intervallo);
  connect(&timer_, &QTimer::timeout, this, [this] { Batti(); });
  timer_.start();
}

void Battito::Annota() {
  if (!corrente_.empty()) {
    double& fermo = fermi_[corrente_];
    fermo = std::max(fermo, orologio_.Milliseconds());
  }
  orologio_ = {};
}

void Battito::Batti() {
  auto* finestra = qobject_cast<QDialog*>(QApplication::activeModalWidget());
  // Where the reading takes long its own small window comes first.
  if (finestra == nullptr || !finestra->isVisible() || finestra->objectName() == "FormLettura") {
    return;
  }
  if (corrente_.empty()) {
    corrente_ = "apertura";
    orologio_ = {};
    return;
  }
  Annota();
  if (++quieti_ < GiriQuieti || Finito()) {
    return;
  }
  quieti_ = 0;
  const Passo& passo = passi_[prossimo_++];
  corrente_ = passo.nome;
  passo.azione(*finestra);
}

void Battito::Chiudi() {
  timer_.stop();
  Annota();
}

} // namespace lumoscad::test
