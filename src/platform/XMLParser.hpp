#pragma once

#include "platform/xml/Nodo.hpp"

#include <functional>

namespace lumoscad::nexaro {

/// The parser of one reply: raises `Parse` with the document element of the program's answer.
class XMLParser {
 public:
  std::function<void(const xml::Nodo&)> Parse;
  /// Set by the link right before the start of the program is sent: what fails from then on leaves it open whether the
  /// program has done its work, unless the failure itself says more (`RuntimeError::Outcome`).
  bool started = false;
  /// Set by the link where the program has written anything as its answer, whatever status it then ended with: a shell
  /// that finds no program has the same ones.
  bool answered = false;

  /// Raises `Parse` with `node`, when someone listens.
  void Consegna(const xml::Nodo& node) const {
    if (Parse) {
      Parse(node);
    }
  }
};

} // namespace lumoscad::nexaro
