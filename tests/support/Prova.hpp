#pragma once

#include "common/Stato.hpp"
#include "platform/Servizi.hpp"

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace lumoscad::prova {

/// A desktop that plays a script: each list window shown takes the next script and is driven by it. Boxes, pointers
/// and wait windows are recorded.
class DesktopRecitato final : public Desktop {
 public:
  using Copione = std::function<void(FinestraElenco&)>;
  using CopioneScadenzario = std::function<void(FinestraScadenzario&)>;

  std::vector<std::string> box;     ///< the texts shown, in order
  std::function<void()> guasto;     ///< called before a box is shown; what it throws keeps it away
  std::vector<std::string> titoli;  ///< their titles
  std::vector<Puntatore> puntatori; ///< every pointer set, in order
  std::vector<std::string> attese;  ///< the texts of the wait windows
  std::vector<int> intervalli;      ///< their timers, in milliseconds
  bool attesaInterrotta = false;    ///< wait windows end without their work
  std::deque<Copione> copioni;      ///< one a list window; a window without a script is closed by its close box
  std::deque<CopioneScadenzario> copioniScadenzario; ///< the same for the single-item windows
  std::size_t finestre = 0;                          ///< list windows shown
  std::size_t respiri = 0;                           ///< times that pending events were let run

  void MostraBox(std::string_view testo, std::string_view titolo) override;
  void ImpostaPuntatore(Puntatore puntatore) override;
  void EventiInAttesa() override;
  void MostraElenco(FinestraElenco& finestra) override;
  void MostraScadenzario(FinestraScadenzario& finestra) override;
  void MostraAttesa(std::string_view testo, int millisecondi, const std::function<void()>& lavoro) override;
};

/// A host that keeps its files in memory, records every operation and answers with a prepared reply.
class HostRegistrato final : public nexaro::HostLink {
 public:
  std::map<std::string, std::string> file;        ///< host path -> bytes
  std::vector<std::string> operazioni;            ///< "Invia /tmp/x", "Rinomina /tmp/x /tmp/x.dos", ...
  std::vector<std::string> host;                  ///< the address of every operation
  std::vector<std::vector<std::string>> chiamate; ///< the parameters of every program call
  std::vector<std::string> inviati;               ///< the bytes of every upload
  std::vector<std::size_t> massimi;               ///< how many bytes of a file were asked for, each time
  std::string risposta = "<RISPOSTA><MESSAGGIO></MESSAGGIO></RISPOSTA>"; ///< the program's XML answer
  /// Raises what an operation is to fail with; called with the operation's text before it has any effect.
  std::function<void(const std::string& operazione)> guasto;

  void EseguiProgramma(std::string_view indirizzo, std::string_view programma,
                       const std::vector<std::string>& parametri, nexaro::XMLParser& destinatario) override;
  void RiceviFile(std::string_view indirizzo, std::string_view remoto, std::string_view locale,
                  std::string& testo) override;
  void RiceviInizio(std::string_view indirizzo, std::string_view remoto, std::string_view locale, std::size_t massimo,
                    std::string& testo) override;
  void InviaFile(std::string_view indirizzo, std::string_view locale, std::string_view remoto) override;
  void RinominaFile(std::string_view indirizzo, std::string_view remoto, std::string_view nuovo,
                    std::string& testo) override;
  void CancellaFile(std::string_view indirizzo, std::string_view remoto) override;

 private:
  void Annota(std::string_view indirizzo, const std::string& operazione);
};

/// Puts a scripted desktop, a recording host, a fixed clock (5 March 2006, 14:07:09), workstation "T01", a private
/// local directory and fresh module-level values in place for the life of the object.
class Banco {
 public:
  Banco();
  Banco(const Banco&) = delete;
  Banco& operator=(const Banco&) = delete;
  ~Banco();

  DesktopRecitato desktop;
  HostRegistrato host;
  nexaro::Ambiente ambiente;
  DataOra adesso{2006, 3, 5, 14, 7, 9};
  std::vector<std::string> istruzioni; ///< every statement text sent to a database

 private:
  StatoSostituito stato_;
  ServiziSostituiti servizi_;
};

} // namespace lumoscad::prova
