#pragma once

#include "lumoscad/lumoscad.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumoscad {

// What the administrator of the link to a host, and of the database, needs, over the C interface. Everything here takes
// the settings of the environment, returns Italian texts, never throws, and may be called on any thread. A text with a
// zero byte in it is refused.

namespace interno {

/// A handle of the C interface whose texts are taken as they come; null where there was no memory for it.
class Maniglia {
 public:
  Maniglia() noexcept {
    if (lumoscad_apri(&maniglia_) == LUMOSCAD_RIUSCITO) {
      lumoscad_controlla_testi(maniglia_, 0);
    }
  }
  Maniglia(const Maniglia&) = delete;
  Maniglia& operator=(const Maniglia&) = delete;
  ~Maniglia() { lumoscad_chiudi(maniglia_); }

  operator lumoscad_maniglia*() const noexcept { return maniglia_; }
  /// Why the last call failed.
  [[nodiscard]] std::string Errore() const {
    return maniglia_ == nullptr ? "Memoria insufficiente" : lumoscad_errore_testo(maniglia_);
  }

 private:
  lumoscad_maniglia* maniglia_ = nullptr;
};

/// A result of the C interface, or none.
class Esito {
 public:
  Esito() = default;
  Esito(const Esito&) = delete;
  Esito& operator=(const Esito&) = delete;
  ~Esito() { lumoscad_libera(esito_); }

  /// Where the C interface puts it.
  [[nodiscard]] lumoscad_esito** Dove() noexcept { return &esito_; }
  operator const lumoscad_esito*() const noexcept { return esito_; }

 private:
  lumoscad_esito* esito_ = nullptr;
};

inline std::string Campo(const lumoscad_esito* esito, int campo) {
  std::size_t lunghezza = 0;
  const char* const testo = lumoscad_campo(esito, campo, &lunghezza);
  return {testo, lunghezza};
}

inline bool Vero(const lumoscad_esito* esito, int campo) noexcept {
  return lumoscad_campo_vero(esito, campo) != 0;
}

/// Texts as the C interface takes them.
template <class... Testi> bool SenzaZeri(const Testi&... testi) noexcept {
  return ((testi.find('\0') == std::string_view::npos) && ...);
}

inline constexpr const char* ConZeri = "Un testo contiene un byte zero.";

} // namespace interno

/// The key that a host on the network presents, before anything is entrusted to it.
struct ChiavePresentata {
  std::string errore;   ///< why there is no key to register; empty when all is well
  bool nota = false;    ///< the key is known already
  std::string tipo;     ///< "ssh-ed25519"
  std::string impronta; ///< "SHA256:..."
  std::string riga;     ///< the line that makes it known
  std::string file;     ///< the file of known hosts
};

/// Connects to a host and asks for its key; nobody is logged in. A key that speaks against a known one is an error.
[[nodiscard]] inline ChiavePresentata ChiediChiaveHost(std::string_view host) noexcept try {
  ChiavePresentata chiave;
  if (!interno::SenzaZeri(host)) {
    chiave.errore = interno::ConZeri;
    return chiave;
  }
  const interno::Maniglia maniglia;
  interno::Esito esito;
  const int numero = lumoscad_chiave_host(maniglia, std::string(host).c_str(), esito.Dove());
  chiave.errore = numero == LUMOSCAD_RIUSCITO ? std::string() : maniglia.Errore();
  chiave.nota = interno::Vero(esito, LUMOSCAD_CAMPO_NOTA);
  chiave.tipo = interno::Campo(esito, LUMOSCAD_CAMPO_TIPO);
  chiave.impronta = interno::Campo(esito, LUMOSCAD_CAMPO_IMPRONTA);
  chiave.riga = interno::Campo(esito, LUMOSCAD_CAMPO_RIGA);
  chiave.file = interno::Campo(esito, LUMOSCAD_CAMPO_FILE);
  return chiave;
} catch (...) {
  ChiavePresentata chiave;
  chiave.errore = "Senza memoria"; // short enough to need none
  return chiave;
}

/// Makes a key known that `ChiediChiaveHost` gave without an error. Returns the empty text, or why it failed.
[[nodiscard]] inline std::string RegistraChiaveHost(const ChiavePresentata& chiave) noexcept try {
  if (!interno::SenzaZeri(chiave.riga, chiave.file)) {
    return interno::ConZeri;
  }
  const interno::Maniglia maniglia;
  const int numero = lumoscad_registra_chiave(maniglia, chiave.riga.c_str(), chiave.file.c_str());
  return numero == LUMOSCAD_RIUSCITO ? std::string() : maniglia.Errore();
} catch (...) {
  return "Senza memoria";
}

/// How one operation of the link went.
struct PassoProva {
  std::string operazione; ///< the operation's name
  bool riuscito = false;  ///< it works
  std::string dettaglio;  ///< what was seen, or why it does not work
};

namespace interno {

using Mostra = std::function<void(const PassoProva&)>;

/// Hands an outcome to the `Mostra` that `utente` is; what that raises stays in the program, and ends the test.
inline int MostraPasso(void* utente, const char* operazione, int riuscito, const char* dettaglio) noexcept try {
  (*static_cast<const Mostra*>(utente))({operazione, riuscito != 0, dettaglio});
  return 0;
} catch (...) {
  return 1;
}

} // namespace interno

/// Runs through the five operations of the link with a file of its own in the host's /tmp, which it removes again, and
/// hands each outcome to `mostra`. With an empty `programma` it looks for the back-end program without starting it;
/// otherwise it runs `programma` without parameters and expects an XML answer. Then it takes a lock that no list uses
/// (PROVA0 to PROVA9, the first that is free), reads it, says who may read it, and frees it; and says whether the note
/// of a command that is cut short can be written in the local directory. True when everything works; what `mostra`
/// raises ends the test, and its file and its lock are removed all the same. It uses the link that commands use: while
/// a command or another test runs, on whatever thread, it is refused, and so is a command while it runs.
[[nodiscard]] inline bool ProvaHost(std::string_view host, std::string_view programma,
                                    const std::function<void(const PassoProva&)>& mostra) noexcept try {
  if (!interno::SenzaZeri(host, programma)) {
    mostra({"Impostazioni", false, interno::ConZeri});
    return false;
  }
  const interno::Maniglia maniglia;
  return lumoscad_prova_host(maniglia, std::string(host).c_str(), std::string(programma).c_str(), interno::MostraPasso,
                             const_cast<interno::Mostra*>(&mostra)) == LUMOSCAD_RIUSCITO;
} catch (...) {
  return false;
}

/// Looks at the database that the "-DB2..." options of `comando` name and hands each outcome to `mostra`; nothing is
/// written. True when everything is as the commands need it. No text holds the password. It takes the turn as
/// `ProvaHost` does.
[[nodiscard]] inline bool ProvaBaseDati(std::string_view comando,
                                        const std::function<void(const PassoProva&)>& mostra) noexcept try {
  if (!interno::SenzaZeri(comando)) {
    mostra({"Impostazioni", false, interno::ConZeri});
    return false;
  }
  const interno::Maniglia maniglia;
  return lumoscad_prova_base_dati(maniglia, std::string(comando).c_str(), interno::MostraPasso,
                                  const_cast<interno::Mostra*>(&mostra)) == LUMOSCAD_RIUSCITO;
} catch (...) {
  return false;
}

/// The lock of a list on the host, as it was seen.
struct BloccoLista {
  std::string lista;    ///< "CREDITI", "DEBITI", "PRESUNTI", or of a test "PROVA0" to "PROVA9"
  bool preso = false;   ///< somebody holds it
  std::string chi;      ///< who: the lock's first line, without control characters and not over 200 of them
  std::string quando;   ///< since when: its second line
  std::string impronta; ///< what tells it from every other lock of the same list
  std::string errore;   ///< why nothing is known of it; empty when all is well
};

namespace interno {

inline BloccoLista Blocco(const lumoscad_esito* esito) {
  return {Campo(esito, LUMOSCAD_CAMPO_NOME),     Vero(esito, LUMOSCAD_CAMPO_PRESO),
          Campo(esito, LUMOSCAD_CAMPO_CHI),      Campo(esito, LUMOSCAD_CAMPO_QUANDO),
          Campo(esito, LUMOSCAD_CAMPO_IMPRONTA), Campo(esito, LUMOSCAD_CAMPO_ERRORE)};
}

inline BloccoLista NonLetto(std::string_view lista, std::string errore) {
  return {std::string(lista), false, {}, {}, {}, std::move(errore)};
}

} // namespace interno

/// Looks at every lock on the host and changes nothing: those of the lists, whether held or not, and those of tests
/// that are held. It uses the link as `ProvaHost` does; where that is refused each lock says why.
[[nodiscard]] inline std::vector<BloccoLista> LeggiBlocchi(std::string_view host) noexcept try {
  std::vector<BloccoLista> blocchi;
  if (!interno::SenzaZeri(host)) {
    blocchi.push_back(interno::NonLetto({}, interno::ConZeri));
    return blocchi;
  }
  const interno::Maniglia maniglia;
  interno::Esito esito;
  if (lumoscad_blocchi(maniglia, std::string(host).c_str(), esito.Dove()) != LUMOSCAD_RIUSCITO && esito == nullptr) {
    blocchi.push_back(interno::NonLetto({}, maniglia.Errore()));
  }
  for (std::size_t indice = 0; indice < lumoscad_voci(esito); ++indice) {
    blocchi.push_back(interno::Blocco(lumoscad_voce(esito, indice)));
  }
  return blocchi;
} catch (...) {
  return {};
}

/// The same for one list; an unknown one is an error.
[[nodiscard]] inline BloccoLista LeggiBlocco(std::string_view host, std::string_view lista) noexcept try {
  if (!interno::SenzaZeri(host, lista)) {
    return interno::NonLetto(lista, interno::ConZeri);
  }
  const interno::Maniglia maniglia;
  interno::Esito esito;
  lumoscad_blocco(maniglia, std::string(host).c_str(), std::string(lista).c_str(), esito.Dove());
  return esito == nullptr ? interno::NonLetto(lista, maniglia.Errore()) : interno::Blocco(esito);
} catch (...) {
  BloccoLista blocco;
  blocco.errore = "Senza memoria";
  return blocco;
}

/// What became of a lock that was to be removed.
struct EsitoBlocco {
  bool tolto = false;    ///< this lock holds the list no more
  std::string dettaglio; ///< why not, or that somebody else had removed it already; else empty
};

/// Removes a lock that `LeggiBlocco` has given, and no other: it is looked at once more, and one that has changed since
/// stays. The program that took it is not told; it goes on as if it held the list.
[[nodiscard]] inline EsitoBlocco TogliBlocco(std::string_view host, const BloccoLista& visto) noexcept try {
  if (!interno::SenzaZeri(host, visto.lista, visto.impronta)) {
    return {false, interno::ConZeri};
  }
  const interno::Maniglia maniglia;
  interno::Esito esito;
  const int numero = lumoscad_libera_blocco(maniglia, std::string(host).c_str(), visto.lista.c_str(),
                                            visto.impronta.c_str(), esito.Dove());
  return numero == LUMOSCAD_RIUSCITO ? EsitoBlocco{true, interno::Campo(esito, LUMOSCAD_CAMPO_TESTO)}
                                     : EsitoBlocco{false, maniglia.Errore()};
} catch (...) {
  return {false, "Senza memoria"};
}

/// One record of a change that was left over, as the database holds it now.
struct RigaInSospeso {
  std::string riga;  ///< as the person knows it from the screen
  std::string stato; ///< "come prima", "fatta", "cambiata da altri"
};

/// What is known of a command that ended, or was ended, before host and database were seen to agree.
struct NotaInSospeso {
  std::string nome;     ///< the note's name, by which the functions below are told which one is meant
  std::string errore;   ///< why the note, or what the database holds of it, could not be read; empty when all is well
  bool inCorso = false; ///< its command runs still, or somebody is realigning it
  bool archiviata = false;          ///< put aside; `consiglio` holds the reason
  std::string chi;                  ///< the command, its workstation, company and host
  std::string quando;               ///< since when
  std::string host;                 ///< what the host has answered, or that it is not known
  std::string baseDati;             ///< how far the command had come in the database
  std::vector<RigaInSospeso> righe; ///< what the database holds now; empty where it was not asked
  std::string consiglio;            ///< what to do next
  std::string domanda;  ///< what must be answered yes before `RiallineaInSospeso`; empty where there is nothing to ask
  std::string testo;    ///< all of this in lines, but for the question
  std::string impronta; ///< what tells it from the same note after a change
};

/// All that is left over, in the local directory of this workstation.
struct ElencoInSospeso {
  bool riuscito = false;           ///< everything could be read
  std::vector<NotaInSospeso> note; ///< oldest first, those that were put aside last
  std::string testo;               ///< what a person reads of it, also why nothing could be read
};

namespace interno {

inline NotaInSospeso Nota(const lumoscad_esito* esito) {
  NotaInSospeso nota;
  nota.nome = Campo(esito, LUMOSCAD_CAMPO_NOME);
  nota.errore = Campo(esito, LUMOSCAD_CAMPO_ERRORE);
  nota.inCorso = Vero(esito, LUMOSCAD_CAMPO_IN_CORSO);
  nota.archiviata = Vero(esito, LUMOSCAD_CAMPO_ARCHIVIATA);
  nota.chi = Campo(esito, LUMOSCAD_CAMPO_CHI);
  nota.quando = Campo(esito, LUMOSCAD_CAMPO_QUANDO);
  nota.host = Campo(esito, LUMOSCAD_CAMPO_HOST);
  nota.baseDati = Campo(esito, LUMOSCAD_CAMPO_BASE_DATI);
  for (std::size_t indice = 0; indice < lumoscad_voci(esito); ++indice) {
    const lumoscad_esito* const riga = lumoscad_voce(esito, indice);
    nota.righe.push_back({Campo(riga, LUMOSCAD_CAMPO_NOME), Campo(riga, LUMOSCAD_CAMPO_STATO)});
  }
  nota.consiglio = Campo(esito, LUMOSCAD_CAMPO_CONSIGLIO);
  nota.domanda = Campo(esito, LUMOSCAD_CAMPO_DOMANDA);
  nota.testo = Campo(esito, LUMOSCAD_CAMPO_TESTO);
  nota.impronta = Campo(esito, LUMOSCAD_CAMPO_IMPRONTA);
  return nota;
}

/// What a person reads where nothing came back.
inline std::string Rigo(const std::string& errore) {
  return errore + "\n";
}

} // namespace interno

/// Looks at what is left over; nothing is changed, but that what was put aside 90 days ago goes. With "-DB2..." options
/// in `comando` that database is asked what it holds of each change; without any it is left alone. It takes the turn as
/// `ProvaHost` does.
[[nodiscard]] inline ElencoInSospeso LeggiInSospeso(std::string_view comando) noexcept try {
  ElencoInSospeso elenco;
  if (!interno::SenzaZeri(comando)) {
    elenco.testo = interno::Rigo(interno::ConZeri);
    return elenco;
  }
  const interno::Maniglia maniglia;
  interno::Esito esito;
  elenco.riuscito = lumoscad_note(maniglia, std::string(comando).c_str(), esito.Dove()) == LUMOSCAD_RIUSCITO;
  elenco.testo = esito == nullptr ? interno::Rigo(maniglia.Errore()) : interno::Campo(esito, LUMOSCAD_CAMPO_TESTO);
  for (std::size_t indice = 0; indice < lumoscad_voci(esito); ++indice) {
    elenco.note.push_back(interno::Nota(lumoscad_voce(esito, indice)));
  }
  return elenco;
} catch (...) {
  return {};
}

/// The same for one of them.
[[nodiscard]] inline NotaInSospeso LeggiNotaInSospeso(std::string_view nome, std::string_view comando) noexcept try {
  NotaInSospeso nota;
  if (!interno::SenzaZeri(nome, comando)) {
    nota.errore = nota.testo = interno::Rigo(interno::ConZeri);
    return nota;
  }
  const interno::Maniglia maniglia;
  interno::Esito esito;
  lumoscad_nota(maniglia, std::string(nome).c_str(), std::string(comando).c_str(), esito.Dove());
  if (esito == nullptr) {
    nota.errore = nota.testo = interno::Rigo(maniglia.Errore());
    return nota;
  }
  return interno::Nota(esito);
} catch (...) {
  NotaInSospeso nota;
  nota.errore = "Senza memoria";
  return nota;
}

/// What became of a note that was to be realigned or put aside.
struct EsitoInSospeso {
  bool riuscito = false; ///< nothing of it is open any more
  std::string testo;     ///< what a person reads of it
};

/// Finishes a change that `LeggiNotaInSospeso` has given: what the database holds as before is written as the command
/// would have written it, in one transaction, and the note goes when nothing is open. What others have changed stays,
/// and so does the note. `vista.domanda` must have been answered yes. A note that has changed since it was looked at is
/// refused, and so is one whose command runs. The host is not asked. It takes the turn as `ProvaHost` does.
[[nodiscard]] inline EsitoInSospeso RiallineaInSospeso(const NotaInSospeso& vista, std::string_view comando) noexcept
    try {
  if (!interno::SenzaZeri(vista.nome, vista.impronta, comando)) {
    return {false, interno::Rigo(interno::ConZeri)};
  }
  const interno::Maniglia maniglia;
  interno::Esito esito;
  const int numero = lumoscad_riallinea_nota(maniglia, vista.nome.c_str(), vista.impronta.c_str(),
                                             std::string(comando).c_str(), esito.Dove());
  return {numero == LUMOSCAD_RIUSCITO,
          esito == nullptr ? interno::Rigo(maniglia.Errore()) : interno::Campo(esito, LUMOSCAD_CAMPO_TESTO)};
} catch (...) {
  return {};
}

/// Puts a note aside, with the reason: it is listed apart from then on, and removed in time.
[[nodiscard]] inline EsitoInSospeso ArchiviaInSospeso(std::string_view nome, std::string_view motivo) noexcept try {
  if (!interno::SenzaZeri(nome, motivo)) {
    return {false, interno::Rigo(interno::ConZeri)};
  }
  const interno::Maniglia maniglia;
  interno::Esito esito;
  const int numero =
      lumoscad_archivia_nota(maniglia, std::string(nome).c_str(), std::string(motivo).c_str(), esito.Dove());
  return {numero == LUMOSCAD_RIUSCITO,
          esito == nullptr ? interno::Rigo(maniglia.Errore()) : interno::Campo(esito, LUMOSCAD_CAMPO_TESTO)};
} catch (...) {
  return {};
}

} // namespace lumoscad
