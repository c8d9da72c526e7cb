#pragma once

#include "Registro.hpp"

#include "platform/HostLink.hpp"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// Stands before a true host link and writes into a record every operation with the bytes and parameters that it
/// carries, what came back, and what the host's program noted of the call in its log.
class HostRegistrante final : public nexaro::HostLink {
 public:
  HostRegistrante(Registro& registro, std::unique_ptr<nexaro::HostLink> vero, std::filesystem::path registroProgramma)
      : registro_(registro), vero_(std::move(vero)), registroProgramma_(std::move(registroProgramma)) {}

  void EseguiProgramma(std::string_view indirizzo, std::string_view programma,
                       const std::vector<std::string>& parametri, nexaro::XMLParser& destinatario) override;
  void RiceviFile(std::string_view indirizzo, std::string_view remoto, std::string_view locale,
                  std::string& testo) override;
  void InviaFile(std::string_view indirizzo, std::string_view locale, std::string_view remoto) override;
  void RinominaFile(std::string_view indirizzo, std::string_view remoto, std::string_view nuovo,
                    std::string& testo) override;
  void CancellaFile(std::string_view indirizzo, std::string_view remoto) override;

 private:
  void Fai(const std::string& operazione, const std::function<void()>& azione);
  void AnnotaFile(std::string_view percorso);
  void AnnotaChiamata(std::size_t prima, const std::vector<std::string>& parametri);

  Registro& registro_;
  std::unique_ptr<nexaro::HostLink> vero_;
  std::filesystem::path registroProgramma_;
};

} // namespace lumoscad::test
