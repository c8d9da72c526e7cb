#pragma once

#include "platform/Desktop.hpp"

#include <optional>
#include <string>
#include <vector>

namespace lumoscad {

/// One heading of a list screen: where it stands and what a click on it sorts by.
struct TestataGriglia {
  int indice = 0; ///< index in `TLwTestata`
  std::string testo;
  int colonna = 0;        ///< the list column below it
  int colonnaOrdine = -1; ///< the column whose texts it sorts by, -1 when it does not sort
};

/// What an empty date editor writes into its cell, and what a tick that is taken away leaves there.
enum class SenzaData {
  Presente, ///< the row's present date, which undoes the edit; a text of blanks counts as empty
  Vuota     ///< nothing; a text of blanks is checked as any other
};

/// How the new date of a row is edited, by `TextScad` and by the tick "RADIO1".
struct NuovaDataGriglia {
  int colonna = -1; ///< where it stands; -1: the list has none
  SenzaData senza = SenzaData::Presente;
  bool soloConData = true;  ///< a row is ticked only when the field at the top has a date for it
  bool tabChiude = true;    ///< Tab closes the editor, as Enter does
  bool fuocoChiude = false; ///< losing the focus closes it; it then uncovers the scroll bars itself
  bool ovunque = false;     ///< it opens by a click in any column of the row
  int scarto = 0;           ///< twips between the left end of its cell and its own
};

/// How the new bank of a row is edited, by `cmbBanche2` and by its tick. The cell's tag is the bank's code.
struct NuovaBancaGriglia {
  int colonna = -1; ///< where it stands; -1: the list has none
  int spunta = -1;  ///< the number of its tick: 0 for "RADIO1", 1 for "RADIO2"
  /// Rows with the same text in this column get a new bank, and lose it, together; without such a text there is no bank
  /// to remove. -1: each row goes by itself, and there is none to remove where it has no present one.
  int gruppo = -1;
  bool ripristina = true;    ///< a cell that loses its new bank shows the present one again, otherwise nothing
  bool codiciInAlto = false; ///< the editor's choice is looked up among the entries of the top field
  std::string modoAssegna;   ///< banks are given in this mode alone; empty: in every mode
  /// In this mode a choice in the top field closes the editors and waits for the ticks "RADIO2", all taken away; in any
  /// other it is given to the selected row at once.
  std::string modoSpunte;
};

/// What is particular to one list screen of the schedule grid. All lengths are twips.
struct DescrizioneGriglia {
  std::string nome; ///< the form's name
  std::string titolo;
  std::string nomeLista;                    ///< the list control's name
  std::string tagLista;                     ///< the list's `Tag` once it is loaded
  std::string carattere;                    ///< the font of the list and of both bank boxes
  std::string carattereTestate = "Verdana"; ///< the headings' font
  int righeSenzaScorrere = 20;              ///< how many rows it shows before it needs a vertical scroll bar
  std::vector<ListColumn> colonne;
  std::vector<int> colonneConTag;
  std::vector<TestataGriglia> testate;
  std::optional<std::string> campoData;  ///< caption of the top date field
  std::optional<std::string> campoBanca; ///< caption of the top bank field
  int colonneChiave = 0;                 ///< the row key is the texts of this many first columns
  bool primaConChiave = false;           ///< an editor always writes into the first row that has the edited row's key
  int colonnaSpunta1 = -1;               ///< the tick "RADIO1"
  int colonnaSpunta2 = -1;               ///< the tick "RADIO2"
  /// "RADIO1" is a check box of the row's own: it takes the date at the top, or none, in every case. The field at the
  /// top is checked when it is left, and what is written there takes every tick away.
  bool caselle = false;
  NuovaDataGriglia data;
  NuovaBancaGriglia banca;

  // What the columns mean; -1 for one that the list has not.

  int colonnaConto = -1;
  int colonnaPartita = -1;   ///< the item or document of a row; its tag tells two with one name apart
  int colonnaScadenza = -1;  ///< the present date
  int colonnaOriginale = -1; ///< the original date
  int colonnaOrdina = -1;    ///< the same so that it sorts by time, "YYYY/MM/DD"
  int colonnaBanca = -1;     ///< the present bank
  int colonnaImporto = -1;
  int colonnaDivisa = -1; ///< the currency of the amount; -1: euro
  int colonnaRata = -1;
  std::string tagScadenza; ///< caption of the date that the tag of `colonnaScadenza` holds; empty: it holds no date
  std::string nomeRiga = "riga"; ///< what the person calls a row, and several; both are feminine
  std::string nomeRighe = "righe";
  std::string nomeData = "data"; ///< what the person calls the date that is changed, for instance "scadenza"
};

} // namespace lumoscad
