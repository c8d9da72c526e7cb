#include "Schermo.hpp"

#include "Dimostrazione.hpp"

#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <thread>
#include <utility>

namespace lumoscad::test {

Schermo::Schermo(const std::filesystem::path& cartella, const std::string& misura)
    : esecuzione_(cartella / "esecuzione") {
  std::filesystem::create_directory(esecuzione_);
  std::filesystem::permissions(esecuzione_, std::filesystem::perms::owner_all);
  const auto numero = cartella / "display";
  // The server picks a free number itself and writes it once it is ready, so that two displays never meet. It does not
  // begin anew when its last program leaves: a look at it would end what is just connecting.
  server_ = std::make_unique<Figlio>(std::vector<std::string>{"Xvfb", "-displayfd", "1", "-screen", "0", misura + "x24",
                                                              "-nolisten", "tcp", "-noreset"},
                                     std::vector<std::string>{}, "/dev/null", numero, cartella / "xvfb.log");
  if (!Finche([&] { return FileText(numero).ends_with('\n') || !server_->Vivo(); }) || !server_->Vivo()) {
    throw std::runtime_error("the virtual display does not start: " + FileText(cartella / "xvfb.log"));
  }
  display_ = ":" + FileText(numero);
  display_.pop_back();
  gestore_ = std::make_unique<Figlio>(std::vector<std::string>{"openbox"}, Ambiente(), "/dev/null",
                                      cartella / "openbox.out", cartella / "openbox.log");
  if (!Finche([&] {
        return Comando({"xdotool", "get_num_desktops"}, Ambiente()) || !gestore_->Vivo();
      }) ||
      !gestore_->Vivo()) {
    throw std::runtime_error("the window manager does not start: " + FileText(cartella / "openbox.log"));
  }
}

std::vector<std::string> Schermo::Ambiente() const {
  return {"DISPLAY=" + display_, "WAYLAND_DISPLAY=", "QT_QPA_PLATFORM=xcb", "XDG_RUNTIME_DIR=" + esecuzione_.string()};
}

std::string Schermo::Trova(const std::string& titolo) const {
  const auto trovate =
      Comando({"xdotool", "search", "--onlyvisible", "--name", "^" + titolo + "$"}, Ambiente()).value_or("");
  return trovate.substr(trovate.find_last_of('\n') + 1);
}

std::string Schermo::AspettaFinestra(const std::string& titolo, Figlio& programma) const {
  std::string finestra;
  const bool pronta = Finche([&] {
    if (!programma.Vivo()) {
      return true;
    }
    finestra = Trova(titolo);
    return !finestra.empty() && Comando({"xdotool", "windowactivate", finestra}, Ambiente()) &&
           Comando({"xdotool", "getactivewindow"}, Ambiente()) == finestra &&
           Comando({"xdotool", "getwindowfocus"}, Ambiente()) == finestra;
  });
  return pronta && programma.Vivo() ? finestra : "";
}

bool Schermo::Sparita(const std::string& titolo) const {
  return Finche([&] { return Trova(titolo).empty(); });
}

bool Schermo::Tasti(const std::vector<std::string>& tasti) const {
  std::vector<std::string> comando{"xdotool", "key", "--delay", "30"};
  comando.insert(comando.end(), tasti.begin(), tasti.end());
  return Comando(comando, Ambiente()).has_value();
}

bool Schermo::Digita(const std::string& testo) const {
  return Comando({"xdotool", "type", "--delay", "30", testo}, Ambiente()).has_value();
}

bool Schermo::Clicca(const std::string& finestra, int x, int y) const {
  const Misure misure = MisureFinestra(finestra);
  const auto posto = [](int valore, int lato) { return std::to_string(valore < 0 ? lato + valore : valore); };
  return Comando({"xdotool", "mousemove", "--window", finestra, posto(x, misure.larghezza), posto(y, misure.altezza),
                  "click", "1"},
                 Ambiente())
      .has_value();
}

bool Schermo::Fotografa(const std::string& finestra, const std::filesystem::path& file) const {
  std::filesystem::create_directories(file.parent_path());
  // A picture taken while the server moves windows about is refused, and is there a moment later.
  for (int tentativo = 0; tentativo < 5; ++tentativo) {
    std::filesystem::remove(file);
    if (Comando({"import", "-window", finestra, file.string()}, Ambiente()) && std::filesystem::exists(file)) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
  }
  return false;
}

Schermo::Misure Schermo::MisureFinestra(const std::string& finestra) const {
  const auto testo = Comando({"xdotool", "getwindowgeometry", finestra}, Ambiente()).value_or("");
  Misure misure;
  const auto inizio = testo.find("Geometry: ");
  if (inizio != std::string::npos) {
    static_cast<void>(std::sscanf(testo.c_str() + inizio, "Geometry: %dx%d", &misure.larghezza, &misure.altezza));
  }
  return misure;
}

} // namespace lumoscad::test
