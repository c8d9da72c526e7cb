#pragma once

#include "Dimostrazione.hpp"
#include "FinestraFinta.hpp"
#include "common/Stato.hpp"
#include "platform/Services.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "platform/qt/QtDesktop.hpp"

#include <QApplication>
#include <QLabel>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lumoscad::test {

/// The component's windows as the person sees them, on a demonstration: real widgets, the real back end on a host that
/// is a directory, and a database. The clock stands at 5 March 2026, 14:07:09; message boxes are answered with Enter.
class FinestraIntera : public testing::Test {
 protected:
  FinestraIntera()
      : servizi_({[this]() -> Desktop& { return *desktop_; },
                  [this]() -> nexaro::HostLink& { return *host_; },
                  [this]() -> const nexaro::Environment& { return ambiente_; },
                  [] { return DateTime{2026, 3, 5, 14, 7, 9}; },
                  {}}) {
    for (const auto& voce : demo.Ambiente()) {
      const auto segno = voce.find('=');
      ::setenv(voce.substr(0, segno).c_str(), voce.substr(segno + 1).c_str(), 1);
    }
    host_ = nexaro::CreateHostLink();
    ambiente_ = nexaro::ReadEnvironment();
    risponditore_.setInterval(5);
    QObject::connect(&risponditore_, &QTimer::timeout, &risponditore_, [this] { RispondiAlBox(); });
    risponditore_.start();
  }

  static void Premi(QDialog& finestra, const char* nome) {
    QTest::mouseClick(&Trova<QWidget>(finestra, nome), Qt::LeftButton);
  }
  /// What the back end wrote of the requests that it was sent.
  [[nodiscard]] std::string Chiamata() const { return FileText(demo.Registro()); }

  Dimostrazione demo;
  std::vector<std::string> box; ///< the texts of the message boxes
  std::function<void()> alBox;  ///< runs before a message box is answered

 private:
  void RispondiAlBox() {
    auto* aperta = QApplication::activeModalWidget();
    if (aperta != nullptr && aperta->objectName() == "MostraMessaggio") {
      box.push_back(Trova<QLabel>(*aperta, "lblMessaggio").text().toStdString());
      if (alBox) {
        alBox();
      }
      QTest::keyClick(aperta, Qt::Key_Return);
    }
  }

  std::unique_ptr<Desktop> desktop_ = qt::CreateDesktop();
  std::unique_ptr<nexaro::HostLink> host_;
  nexaro::Environment ambiente_;
  StatoSostituito stato_;
  ReplacedServices servizi_;
  QTimer risponditore_;
};

} // namespace lumoscad::test
