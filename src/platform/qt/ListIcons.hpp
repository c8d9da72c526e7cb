#pragma once

#include <QIcon>
#include <QObject>
#include <QRectF>

#include <string_view>

class QPainter;

namespace lumoscad::qt {

/// The pictures of a list window: the six of its image list and those of the
/// tick columns' headings and of the two buttons.
enum class ListIcon { ChkOn, ChkOff, OptOn, OptOff, Sorted, SortedReverse, Unsorted, SmallSquare, Confirm, Cancel };

/// The key of a picture, "CHKON" for instance; both directions of the sorted indicator are "SORTED".
[[nodiscard]] std::string_view Key(ListIcon icon);
/// Draws a picture in the largest centred square of `area`, sharp at any scale.
void Draw(QPainter& painter, const QRectF& area, ListIcon icon);
/// The image list of a list window: the six small pictures, by their keys; its property "chiavi" lists them.
class ListImages final : public QObject {
 public:
  explicit ListImages(QObject* parent);
  /// Draws the picture with this key as the function above does; nothing for a key that it does not hold.
  void Draw(QPainter& painter, const QRectF& area, std::string_view key) const;
};

/// The picture as an icon that is drawn anew for every size.
[[nodiscard]] QIcon Icon(ListIcon icon);

} // namespace lumoscad::qt
