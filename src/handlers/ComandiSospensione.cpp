#include "common/Messaggi.hpp"
#include "common/Stato.hpp"
#include "handlers/ModuloMain.hpp"
#include "handlers/Opzioni.hpp"
#include "handlers/RichiestaAttesa.hpp"
#include "platform/Services.hpp"

namespace lumoscad::ModuloMain {
namespace {

struct OpzioniPartita {
  std::string conto;
  NumeroPartita partita;
  bool dimostrazione = false;
};

OpzioniPartita LeggiPartita(std::string_view comando) {
  OpzioniPartita opzioni;
  LeggiOpzioni(comando, {{"-T", &stato().tipoComando, Forma::Maiuscola},
                         {"-H", &stato().HostIP},
                         {"-D", &stato().azienda},
                         {"-C", &opzioni.conto},
                         {"-P", &opzioni.partita},
                         {"-DEMO", &opzioni.dimostrazione}});
  return opzioni;
}

std::string ComandoPresunto(std::string_view comando, std::string_view azione,
                            std::string_view messaggioDimostrazione) {
  std::string serie;
  std::string anno;
  std::string numero;
  std::string esercizio; // read for its syntax only: the back end does not ask for it
  LeggiOpzioni(comando, {{"-H", &stato().HostIP},
                         {"-D", &stato().azienda},
                         {"-S", &serie},
                         {"-A", &anno},
                         {"-N", &numero},
                         {"-E", &esercizio},
                         {"-DEMO", &stato().demoPresunti}});
  if (stato().demoPresunti) {
    MostraMessaggio(messaggioDimostrazione, "");
    return "";
  }
  const std::vector<std::string> parametri = {
      stato().azienda, std::string(azione), serie, anno, numero, ActiveServices().environment().CodicePostazione, ""};
  return RichiestaAttesa(stato().HostIP, parametri, parametri);
}

} // namespace

std::string ComandoSospendiPartita(std::string_view comando) {
  const OpzioniPartita opzioni = LeggiPartita(comando);
  if (opzioni.dimostrazione) {
    MostraMessaggio("La partita è stata sospesa", "");
    return "";
  }
  return RichiestaSospensione(stato().azienda, stato().HostIP, opzioni.conto, opzioni.partita.compatta,
                              opzioni.partita.spaziata);
}

std::string ComandoRiattivaPartita(std::string_view comando) {
  const OpzioniPartita opzioni = LeggiPartita(comando);
  if (opzioni.dimostrazione) {
    MostraMessaggio("La partita è stata riattivata", "");
    return "";
  }
  return RichiestaRiattivazione(stato().azienda, stato().HostIP, opzioni.conto, opzioni.partita.compatta,
                                opzioni.partita.spaziata);
}

std::string RichiestaSospensione(std::string_view azienda, std::string_view hostIP, std::string_view conto,
                                 std::string_view partitaCompatta, std::string_view partitaSpaziata) {
  return RichiestaAttesa(hostIP,
                         {std::string(azienda), "SOSPESOCREA", std::string(conto), std::string(partitaCompatta),
                          ActiveServices().environment().CodicePostazione, ""},
                         {std::string(azienda), "SOSPESOCREA", std::string(conto), std::string(partitaSpaziata), ""});
}

std::string RichiestaRiattivazione(std::string_view azienda, std::string_view hostIP, std::string_view conto,
                                   std::string_view partitaCompatta, std::string_view partitaSpaziata) {
  return RichiestaAttesa(
      hostIP, {std::string(azienda), "SOSPESOCANCELLA", std::string(conto), std::string(partitaCompatta), ""},
      {std::string(azienda), "SOSPESOCANCELLA", std::string(conto), std::string(partitaSpaziata), ""});
}

std::string ComandoSospendiPresunto(std::string_view comando) {
  return ComandoPresunto(comando, "PRESUNTOCREA", "Il documento è stato sospeso ");
}

std::string ComandoRiattivaPresunto(std::string_view comando) {
  return ComandoPresunto(comando, "PRESUNTOCANCELLA", "Il documento è stato riattivato");
}

} // namespace lumoscad::ModuloMain
