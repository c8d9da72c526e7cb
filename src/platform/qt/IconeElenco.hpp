#pragma once

#include <QIcon>
#include <QObject>
#include <QRectF>

#include <string_view>

class QPainter;

namespace lumoscad::qt {

/// The pictures of a list window: the six of its image list and those of the
/// tick columns' headings and of the two buttons.
enum class IconaElenco { ChkOn, ChkOff, OptOn, OptOff, Sorted, SortedInverso, Unsorted, Quadratino, Conferma, Annulla };

/// The key of a picture, "CHKON" for instance; both directions of the sorted indicator are "SORTED".
[[nodiscard]] std::string_view Chiave(IconaElenco icona);
/// Draws a picture in the largest centred square of `area`, sharp at any scale.
void Disegna(QPainter& disegno, const QRectF& area, IconaElenco icona);
/// The image list of a list window: the six small pictures, by their keys; its property "chiavi" lists them.
class ImmaginiElenco final : public QObject {
 public:
  explicit ImmaginiElenco(QObject* padre);
  /// Draws the picture with this key as the function above does; nothing for a key that it does not hold.
  void Disegna(QPainter& disegno, const QRectF& area, std::string_view chiave) const;
};

/// The picture as an icon that is drawn anew for every size.
[[nodiscard]] QIcon Icona(IconaElenco icona);

} // namespace lumoscad::qt
