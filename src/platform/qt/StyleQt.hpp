#pragma once

#include <QProxyStyle>

namespace lumoscad::qt {

/// How the windows' buttons, fields and boxes are drawn: with borders, arrows and a mark of the focus that can be told
/// from their ground whatever the palette. Measures follow the desktop's text size.
class StyleQt final : public QProxyStyle {
 public:
  explicit StyleQt(QObject* parent);

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
  void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                          const QWidget* widget) const override;
  [[nodiscard]] QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                                       const QWidget* widget) const override;
  [[nodiscard]] int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                              QStyleHintReturn* more) const override;
};

} // namespace lumoscad::qt
