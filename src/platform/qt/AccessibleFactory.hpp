#pragma once

class QWidget;

namespace lumoscad::qt {

/// While there is one of these, our own widgets show themselves to assistive tools in their own way. It answers for no
/// widget of the calling program, whose own factories are asked as ever; with the last one it is gone.
class AccessibleFactory {
 public:
  AccessibleFactory();
  AccessibleFactory(const AccessibleFactory&) = delete;
  AccessibleFactory& operator=(const AccessibleFactory&) = delete;
  ~AccessibleFactory();
};

/// Has assistive tools read out the name of a widget that is shown. Qt 6.4 has no event of its own for that: readers
/// speak a notification when it comes up.
void Announce(QWidget& widget);

} // namespace lumoscad::qt
