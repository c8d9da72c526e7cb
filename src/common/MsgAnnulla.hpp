#pragma once

#include "platform/XMLParser.hpp"

#include <string>
#include <vector>

namespace lumoscad {

/// The reply object of one command: the texts of the program's answer, and the place where database procedures
/// and screen loaders put theirs. A non-empty `Errore` means that the command failed.
class MsgAnnulla {
 public:
  MsgAnnulla();
  MsgAnnulla(const MsgAnnulla&) = delete;
  MsgAnnulla& operator=(const MsgAnnulla&) = delete;
  ~MsgAnnulla() = default;

  std::string Messaggio;
  std::string Errore;
  /// What an update that was committed found changed by somebody else and left so, each row as the person knows it.
  std::vector<std::string> righeRimaste;
  nexaro::XMLParser XMLParser;

 private:
  void XMLParser_Parse(const xml::Nodo& nodo);
};

} // namespace lumoscad
