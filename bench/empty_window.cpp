// A program that opens an empty window of Qt and ends as soon as it is painted.

#include "FirstPaint.hpp"
#include "Measures.hpp"

#include <cstdio>

int main(int number, char** arguments) {
  const QApplication application(number, arguments);
  const lumoscad::bench::FirstPaint painted(QStringLiteral("vuota"), [] {
    std::printf("%.3f ms shown\n", lumoscad::bench::Now());
    QCoreApplication::exit(0);
  });
  QWidget window;
  window.setObjectName(QStringLiteral("vuota"));
  window.resize(1100, 640);
  window.show();
  return QApplication::exec();
}
