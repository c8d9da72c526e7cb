#include "common/Messaggi.hpp"
#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "handlers/ModuloMain.hpp"
#include "handlers/Opzioni.hpp"
#include "handlers/RichiestaAttesa.hpp"
#include "platform/Servizi.hpp"

namespace lumoscad::ModuloMain {
namespace {

struct OpzioniPartita {
  std::string conto;
  NumeroPartita partita;
  bool dimostrazione = false;
};

OpzioniPartita LeggiPartita(std::string_view comando) {
  OpzioniPartita opzioni;
  LeggiOpzioni(
      comando,
      {{"-T", &stato().TipoComando}, {"-H", &stato().HostIP}, {"-D", &stato().Azienda}, {"-C", &opzioni.conto}},
      &opzioni.partita);
  stato().TipoComando = Maiuscolo(stato().TipoComando);
  opzioni.dimostrazione = HaOpzione(comando, "-DEMO");
  return opzioni;
}

std::string RichiestaSospensione(const OpzioniPartita& o) {
  const std::string& azienda = stato().Azienda;
  return RichiestaAttesa(
      stato().HostIP, {azienda, "SOSPESOCREA", o.conto, o.partita.compatta, servizi().ambiente().CodicePostazione, ""},
      {azienda, "SOSPESOCREA", o.conto, o.partita.spaziata, ""});
}

/// Unlike a suspension, a reactivation does not carry the workstation: the back end's protocol has it so.
std::string RichiestaRiattivazione(const OpzioniPartita& o) {
  const std::string& azienda = stato().Azienda;
  return RichiestaAttesa(stato().HostIP, {azienda, "SOSPESOCANCELLA", o.conto, o.partita.compatta, ""},
                         {azienda, "SOSPESOCANCELLA", o.conto, o.partita.spaziata, ""});
}

std::string ComandoPresunto(std::string_view comando, std::string_view azione,
                            std::string_view messaggioDimostrazione) {
  std::string serie;
  std::string anno;
  std::string numero;
  std::string esercizio; // read for its syntax only: the back end does not ask for it
  LeggiOpzioni(comando, {{"-H", &stato().HostIP},
                         {"-D", &stato().Azienda},
                         {"-S", &serie},
                         {"-A", &anno},
                         {"-N", &numero},
                         {"-E", &esercizio}});
  stato().DemoPresunti = stato().DemoPresunti || HaOpzione(comando, "-DEMO");
  if (stato().DemoPresunti) {
    MostraMessaggio(messaggioDimostrazione, "");
    return "";
  }
  const std::vector<std::string> parametri = {
      stato().Azienda, std::string(azione), serie, anno, numero, servizi().ambiente().CodicePostazione, ""};
  return RichiestaAttesa(stato().HostIP, parametri, parametri);
}

} // namespace

std::string ComandoSospendiPartita(std::string_view comando) {
  const OpzioniPartita opzioni = LeggiPartita(comando);
  if (opzioni.dimostrazione) {
    MostraMessaggio("La partita è stata sospesa", "");
    return "";
  }
  return RichiestaSospensione(opzioni);
}

std::string ComandoRiattivaPartita(std::string_view comando) {
  const OpzioniPartita opzioni = LeggiPartita(comando);
  if (opzioni.dimostrazione) {
    MostraMessaggio("La partita è stata riattivata", "");
    return "";
  }
  return RichiestaRiattivazione(opzioni);
}

std::string ComandoSospendiPresunto(std::string_view comando) {
  return ComandoPresunto(comando, "PRESUNTOCREA", "Il documento è stato sospeso ");
}

std::string ComandoRiattivaPresunto(std::string_view comando) {
  return ComandoPresunto(comando, "PRESUNTOCANCELLA", "Il documento è stato riattivato");
}

} // namespace lumoscad::ModuloMain
