#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "platform/nexaro/Settings.hpp"
#include "platform/nexaro/cartella/DirectoryLink.hpp"
#include "platform/nexaro/ssh/SshLink.hpp"

namespace lumoscad::nexaro {

std::unique_ptr<HostLink> CreateHostLink() {
  const auto transport = Setting("NEXARO_TRASPORTO");
  if (transport.empty() || transport == "ssh") {
    return std::make_unique<SshLink>(ReadSshSettings());
  }
  if (transport != "cartella") {
    throw LinkError("NEXARO_TRASPORTO sconosciuto: vale «" + transport + "», sono ammessi «ssh» e «cartella».");
  }
  const auto root = Setting("NEXARO_RADICE");
  if (root.empty()) {
    throw LinkError("Manca l'impostazione NEXARO_RADICE, la cartella che fa da host.");
  }
  return std::make_unique<DirectoryLink>(root, ReadTimeout());
}

} // namespace lumoscad::nexaro
