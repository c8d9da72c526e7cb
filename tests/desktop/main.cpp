#include <QApplication>
#include <QSettings>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  testing::InitGoogleTest(&argc, argv);
  // What a person keeps of the windows' look on this machine is neither read nor written. No folder can be made there,
  // whoever runs this.
  QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("/dev/null/nowhere"));
  const QApplication applicazione(argc, argv);
  return RUN_ALL_TESTS();
}
