#include <QApplication>
#include <QSettings>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  testing::InitGoogleTest(&argc, argv);
  // What a person keeps of the windows' look on this machine is neither read nor written.
  QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("/nonexistent"));
  const QApplication applicazione(argc, argv);
  return RUN_ALL_TESTS();
}
