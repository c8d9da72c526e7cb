#pragma once

#include "Registro.hpp"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// Writes into a record what the program hands to the driver manager: a program that links this has those functions
/// listened to on their way, from the object's making to its end, for one thread. A statement that the component
/// announced stands in the record with the values bound to it; every other one is the layer's own.
class AscoltoOdbc {
 public:
  explicit AscoltoOdbc(Registro& registro);
  AscoltoOdbc(const AscoltoOdbc&) = delete;
  AscoltoOdbc& operator=(const AscoltoOdbc&) = delete;
  ~AscoltoOdbc();

  /// While it lives, nothing is listened to: what a test itself asks of a database.
  class Pausa {
   public:
    Pausa();
    Pausa(const Pausa&) = delete;
    Pausa& operator=(const Pausa&) = delete;
    ~Pausa();

   private:
    AscoltoOdbc* interrotto_;
  };

  /// The services' listener is to call this; heeded while an object listens.
  static void Annunciata(std::string_view testo);

  // What the functions tell.
  struct Valore {
    const char* dati = nullptr;
    const long* lunghezza = nullptr; ///< negative: no value
  };
  void Apre(std::string_view connessione);
  void Chiude();
  void Preparata(const void* istruzione, std::string_view testo);
  void Assegnato(const void* istruzione, unsigned posto, Valore valore);
  void SenzaValori(const void* istruzione);
  void Liberata(const void* istruzione);
  void Eseguita(const void* istruzione);
  void Eseguita(const void* istruzione, std::string_view testo);
  void Toccate(const void* istruzione, long righe);
  void Fallita(const void* istruzione);
  void Fine(bool conferma);
  void Conferme(bool automatiche);
  void FineFallita();

 private:
  struct Istruzione {
    std::string testo;
    std::map<unsigned, Valore> valori;
    bool delComponente = false; ///< the last execution was announced
  };
  void Annota(const Istruzione& istruzione, const std::string& riga);

  Registro& registro_;
  std::string annunciata_;
  std::map<const void*, Istruzione> istruzioni_;
};

} // namespace lumoscad::test
