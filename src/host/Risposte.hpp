#pragma once

#include "platform/XMLParser.hpp"

#include <memory>
#include <string>
#include <vector>

/// The reply classes of the requests that answer with due dates. Each copies the child elements of the node it is
/// given into its properties: names count in any case, the last occurrence wins, unknown elements are ignored.
namespace lumoscad {

/// One instalment of an open item.
class Scadenza {
 public:
  Scadenza();
  Scadenza(const Scadenza&) = delete;
  Scadenza& operator=(const Scadenza&) = delete;
  ~Scadenza() = default;

  std::string DataScadenza;
  std::string TipoPagamento;
  std::string Importo;
  std::string ScadenzaRiallocata;
  nexaro::XMLParser XMLParser;

 private:
  void XMLParser_Parse(const xml::Nodo& nodo);
};

/// An open item with its instalments.
class Partita {
 public:
  Partita();
  Partita(const Partita&) = delete;
  Partita& operator=(const Partita&) = delete;
  ~Partita() = default;

  std::string Conto;
  std::string DescrizioneConto;
  std::string ContoPartita;
  std::vector<std::unique_ptr<Scadenza>> Scadenze; ///< in document order
  nexaro::XMLParser XMLParser;

 private:
  void XMLParser_Parse(const xml::Nodo& nodo);
};

/// One instalment of an extra movement.
class ExtraScadenza {
 public:
  ExtraScadenza();
  ExtraScadenza(const ExtraScadenza&) = delete;
  ExtraScadenza& operator=(const ExtraScadenza&) = delete;
  ~ExtraScadenza() = default;

  std::string DataScadenza;
  std::string Importo;
  nexaro::XMLParser XMLParser;

 private:
  void XMLParser_Parse(const xml::Nodo& nodo);
};

/// An extra movement with its instalments.
class ExtraMovimento {
 public:
  ExtraMovimento();
  ExtraMovimento(const ExtraMovimento&) = delete;
  ExtraMovimento& operator=(const ExtraMovimento&) = delete;
  ~ExtraMovimento() = default;

  std::string Serie;
  std::string Esercizio;
  std::string Numero;
  std::vector<std::unique_ptr<ExtraScadenza>> Scadenze; ///< in document order
  nexaro::XMLParser XMLParser;

 private:
  void XMLParser_Parse(const xml::Nodo& nodo);
};

/// One due date of an item as the back end keeps it.
class CobolPartita {
 public:
  CobolPartita();
  CobolPartita(const CobolPartita&) = delete;
  CobolPartita& operator=(const CobolPartita&) = delete;
  ~CobolPartita() = default;

  std::string Scadenza;
  std::string Importo;
  std::string ScadRiall;
  nexaro::XMLParser XMLParser;

 private:
  void XMLParser_Parse(const xml::Nodo& nodo);
};

} // namespace lumoscad
