#include "platform/GestureTable.hpp"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

namespace lumoscad {
namespace {

using G = Gesture;
using P = GesturePlace;
constexpr GestureScreens Lists = GestureScreens::Lists;
constexpr GestureScreens Item = GestureScreens::Item;
constexpr GestureScreens All = GestureScreens::All;

constexpr std::array Window = std::to_array<GestureEntry>({
    {G::Help, P::Window, All, "F1", "", "Tasti e gesti", "apre questo elenco; si cerca scrivendo"},
    {G::Confirm, P::Window, All, "Ctrl+Return; Ctrl+Enter", "", "Conferma",
     "manda le variazioni, anche quelle non in vista"},
    {G::ConfirmButton, P::Window, All, "Alt+C", "", "Pulsante Conferma", "come un clic su Conferma"},
    {G::Leave, P::Window, All, "Esc", "", "Chiudi",
     "chiude senza variare nulla; se ci sono variazioni va prima su Annulla, e chiude la seconda volta"},
    {G::LeaveButton, P::Window, All, "Alt+A", "", "Pulsante Annulla", "chiude subito senza variare nulla"},
    {G::NextField, P::Window, All, "Tab; Shift+Tab", "", "Campo seguente, campo precedente",
     "passa fra i campi in alto, l'elenco, Conferma e Annulla"},
    {G::FirstField, P::Window, Lists, "Alt+N", "", "Primo campo in alto", "va al primo campo sopra l'elenco"},
    {G::SecondField, P::Window, Lists, "Alt+U", "", "Nuova banca in alto",
     "va al campo della banca, dove in alto c'è anche una data"},
    {G::SelectEverything, P::Window, Item, "Alt+S", "", "Seleziona tutto",
     "mette il segno a tutte le rate, una seconda volta lo toglie"},
    {G::Sort, P::Window, Lists, "Ctrl+1; Ctrl+2; Ctrl+3; Ctrl+4; Ctrl+5; Ctrl+6; Ctrl+7; Ctrl+8; Ctrl+9", "", "Ordina",
     "ordina per la colonna con quel numero, che è detto fermandosi con il mouse sulla sua intestazione"},
    {G::Find, P::Window, Lists, "Ctrl+F", "", "Trova…", "apre il filtro sopra l'elenco"},
    {G::Undo, P::Window, All, "Ctrl+Z", "", "Annulla l'ultimo gesto",
     "riporta indietro tutto ciò che l'ultimo gesto ha fatto, anche su molte righe"},
    {G::Redo, P::Window, All, "Ctrl+Y; Ctrl+Shift+Z", "", "Ripeti", "rifà ciò che è stato annullato"},
    {G::Copy, P::Window, All, "Ctrl+C", "", "Copia",
     "copia le righe scelte, se sono più d'una, o tutte quelle in vista"},
    {G::Paste, P::Window, Lists, "Ctrl+V", "", "Incolla",
     "dà alle righe scelte le date o i codici di banca copiati altrove: tutti, o nessuno"},
    {G::Save, P::Window, Lists, "Ctrl+S", "", "Salva…", "salva le righe per un foglio di calcolo o da stampare"},
    {G::Effects, P::Window, Lists, "F6", "", "Effetto delle variazioni",
     "apre e chiude il pannello con gli importi per banca e per mese, prima e dopo"},
    {G::Changes, P::Window, Lists, "F7", "", "Elenco delle variazioni", "apre e chiude le variazioni una per una"},
    {G::Details, P::Window, All, "F3", "", "Dettagli della riga", "mostra tutto ciò che è stato letto della riga"},
    {G::ResetLayout, P::Window, All, "Ctrl+0", "", "Ripristina disposizione",
     "rimette larghezze, grandezza e pannello com'erano in origine"},
    {G::SelectAccount, P::Window, Lists, "Ctrl+T", "", "Seleziona tutto il conto",
     "sceglie le righe in vista dello stesso conto"},
    {G::SelectItem, P::Window, Lists, "Ctrl+P", "", "Seleziona tutta la partita",
     "sceglie le righe in vista della stessa partita"},
    {G::SelectBank, P::Window, Lists, "Ctrl+B", "", "Seleziona la stessa banca",
     "sceglie le righe in vista con la stessa banca attuale"},
    {G::SelectMonth, P::Window, Lists, "Ctrl+M", "", "Seleziona lo stesso mese",
     "sceglie le righe in vista che scadono nello stesso mese"},
    {G::SelectOverdue, P::Window, Lists, "Ctrl+D", "", "Seleziona tutte le scadute",
     "sceglie le righe in vista scadute prima di oggi"},
    {G::InvertSelection, P::Window, Lists, "Ctrl+I", "", "Inverti la selezione",
     "sceglie le righe in vista che non lo sono, e lascia le altre"},
});

constexpr std::array OnRows = std::to_array<GestureEntry>({
    {G::Move, P::List, All, "Up; Down; PgUp; PgDown; Home; End", "", "Spostati",
     "va a un'altra riga e sceglie quella sola"},
    {G::Across, P::List, All, "Left; Right", "", "Cella accanto", "va alla cella accanto"},
    {G::Tick, P::List, All, "Space", "", "Spunta",
     "mette o toglie il segno nella colonna di una casella, a tutte le righe scelte"},
    {G::OpenCell, P::List, All, "F2; Return; Enter", "", "Apri la cella",
     "apre la cella della nuova data o della nuova banca"},
    {G::TypeDigit, P::List, All, "", "una cifra", "Scrivi la data",
     "apre la cella della nuova data e comincia a scrivere"},
    {G::JumpTo, P::List, Lists, "", "una lettera", "Salta alla riga",
     "va alla prossima riga che comincia così nella colonna ordinata"},
    {G::Menu, P::List, Lists, "Menu; Shift+F10", "", "Menu", "apre il menu dell'elenco"},
    {G::SelectAll, P::List, Lists, "Ctrl+A", "", "Seleziona visibili", "sceglie tutte le righe in vista"},
    {G::Extend, P::List, Lists, "Shift+Up; Shift+Down; Shift+PgUp; Shift+PgDown; Shift+Home; Shift+End", "",
     "Scegli fin qui", "sceglie le righe dalla prima scelta fino a quella a cui va"},
    {G::MoveAlone, P::List, Lists, "Ctrl+Up; Ctrl+Down; Ctrl+PgUp; Ctrl+PgDown", "", "Spostati soltanto",
     "va a un'altra riga e lascia scelte le stesse"},
    {G::AddRange, P::List, Lists,
     "Ctrl+Shift+Up; Ctrl+Shift+Down; Ctrl+Shift+PgUp; Ctrl+Shift+PgDown; Ctrl+Shift+Home; Ctrl+Shift+End", "",
     "Aggiungi fin qui", "aggiunge a quelle scelte le righe fino a quella a cui va"},
    {G::ToggleRow, P::List, Lists, "Ctrl+Space", "", "Scegli anche questa",
     "sceglie la riga, o la lascia, senza toccare le altre"},
    {G::TickUpTo, P::List, Lists, "Shift+Space", "", "Spunta fin qui",
     "dà alle righe dalla prima scelta fin qui il segno che ha quella"},
});

constexpr std::array InFields = std::to_array<GestureEntry>({
    {G::CloseCell, P::Editor, All, "Return; Enter", "", "Chiudi la cella",
     "scrive il valore e passa alla riga seguente; se le righe scelte sono molte, vale per tutte"},
    {G::NextCell, P::Editor, Lists, "Tab; Shift+Tab", "", "Cella seguente, cella precedente",
     "scrive il valore e passa alla cella accanto"},
    {G::AbandonCell, P::Editor, All, "Esc", "", "Lascia la cella", "chiude la cella senza cambiare nulla"},
    {G::DayLater, P::DateField, All, "Up", "", "Un giorno dopo", "sposta la data di un giorno avanti"},
    {G::DayEarlier, P::DateField, All, "Down", "", "Un giorno prima", "sposta la data di un giorno indietro"},
    {G::MonthLater, P::DateField, All, "PgUp", "", "Un mese dopo", "la fine del mese resta fine del mese"},
    {G::MonthEarlier, P::DateField, All, "PgDown", "", "Un mese prima", "la fine del mese resta fine del mese"},
    {G::OpenCalendar, P::DateField, All, "F4", "", "Calendario",
     "apre il calendario, con le feste e quante rate scadono ogni giorno"},
    {G::ShortDate, P::DateField, All, "", "fm, oppure +30", "Data abbreviata",
     "la fine del mese, oppure trenta giorni dopo; nella riga dalla sua data, in alto da oggi"},
    {G::NarrowBanks, P::BankBox, Lists, "", "una lettera o una cifra", "Cerca la banca",
     "apre la lista e tiene le sole banche con quelle lettere nel nome o nel codice"},
    {G::WidenBanks, P::BankBox, Lists, "Backspace", "", "Togli una lettera", "allarga la ricerca"},
    {G::ChooseBank, P::BankBox, Lists, "Return; Enter", "", "Scegli la banca",
     "sceglie la banca evidenziata nella lista aperta"},
    {G::CloseBanks, P::BankBox, Lists, "Esc", "", "Chiudi la lista", "lascia la banca com'era"},
});

constexpr std::array Beside = std::to_array<GestureEntry>({
    {G::CalendarDay, P::Calendar, All, "Left; Right", "", "Giorno prima, giorno dopo", "va al giorno accanto"},
    {G::CalendarWeek, P::Calendar, All, "Up; Down", "", "Settimana prima, settimana dopo",
     "va allo stesso giorno dell'altra settimana"},
    {G::CalendarMonth, P::Calendar, All, "PgUp; PgDown", "", "Mese prima, mese dopo",
     "va all'altro mese; anche con la rotella"},
    {G::CalendarEndDays, P::Calendar, All, "Home; End", "", "Primo del mese, ultimo del mese",
     "va al primo o all'ultimo giorno"},
    {G::CalendarChoose, P::Calendar, All, "Return; Enter; Space", "", "Scegli il giorno",
     "lo scrive nel campo, che resta aperto; anche con un clic"},
    {G::CalendarClose, P::Calendar, All, "Esc; F4", "", "Chiudi il calendario", "chiude senza scrivere"},
    {G::FilterDone, P::Filter, Lists, "Return; Enter; Down", "", "Passa all'elenco", "lascia il filtro com'è"},
    {G::FilterClear, P::Filter, Lists, "Esc", "", "Mostra tutto", "toglie il filtro e mostra di nuovo tutte le righe"},
    {G::TakeBack, P::Changes, Lists, "Del", "", "Riprendi", "rimette come prima le righe scelte lì"},
    {G::FilterBehind, P::Effects, Lists, "Return; Enter; Space", "", "Filtra",
     "tiene in vista le sole righe che stanno dietro la barra; una seconda volta le mostra tutte"},
    {G::EffectsClear, P::Effects, Lists, "Esc", "", "Mostra tutto", "toglie il filtro della barra"},
    {G::HelpSearch, P::Help, All, "", "qualsiasi parola", "Cerca",
     "tiene le righe che la contengono; più parole in qualsiasi ordine"},
    {G::HelpRows, P::Help, All, "Up; Down", "", "Scorri", "passa dalla ricerca alle righe e le scorre"},
    {G::HelpPrint, P::Help, All, "Ctrl+P", "", "Stampa…", "salva l'elenco in un PDF da stampare"},
    {G::HelpClose, P::Help, All, "Esc", "", "Chiudi", "chiude questo elenco"},
});

constexpr std::array WithMouse = std::to_array<GestureEntry>({
    {G::MouseTick, P::Mouse, All, "", "clic su una casella", "Spunta",
     "mette o toglie il segno, a tutte le righe scelte se è una di loro"},
    {G::MouseOpen, P::Mouse, All, "", "clic su una cella nuova", "Apri la cella",
     "apre la nuova data o la nuova banca"},
    {G::MouseSelect, P::Mouse, Lists, "", "Maiusc+clic, Ctrl+clic", "Scegli più righe",
     "di seguito, oppure una qui e una là"},
    {G::MouseTickUpTo, P::Mouse, Lists, "", "Maiusc+clic su una casella", "Spunta fin qui",
     "dà alle righe dalla prima scelta fin qui il segno che ha quella"},
    {G::MouseDrag, P::Mouse, Lists, "", "trascinare sulle righe", "Scegli o spunta di seguito",
     "sceglie le righe passate; sulle caselle dà a tutte lo stesso segno"},
    {G::MouseMenu, P::Mouse, Lists, "", "tasto destro sull'elenco", "Menu", "apre il menu dell'elenco"},
    {G::MouseSort, P::Mouse, Lists, "", "clic su un'intestazione", "Ordina",
     "ordina per quella colonna, la seconda volta al contrario"},
    {G::MouseWidth, P::Mouse, All, "", "trascinare il bordo di un'intestazione", "Larghezza",
     "allarga o stringe la colonna"},
    {G::MouseFit, P::Mouse, All, "", "doppio clic sul bordo di un'intestazione", "Larghezza giusta",
     "dà alla colonna la larghezza di ciò che contiene"},
    {G::MouseBar, P::Mouse, Lists, "", "clic su una barra dell'effetto", "Filtra",
     "tiene in vista le sole righe che stanno dietro la barra; una seconda volta le mostra tutte"},
});

template <std::size_t... Sizes> constexpr auto Joined(const std::array<GestureEntry, Sizes>&... parts) {
  std::array<GestureEntry, (Sizes + ...)> table{};
  auto end = table.begin();
  ((end = std::copy(parts.begin(), parts.end(), end)), ...);
  return table;
}

constexpr std::array Table = Joined(Window, OnRows, InFields, Beside, WithMouse);

constexpr std::array KeyNames = std::to_array<std::pair<std::string_view, std::string_view>>({
    {"Shift", "Maiusc"},
    {"Return", "Invio"},
    {"Enter", "Invio del tastierino"},
    {"Space", "Spazio"},
    {"PgUp", "Pag su"},
    {"PgDown", "Pag giù"},
    {"Home", "Home"},
    {"End", "Fine"},
    {"Up", "Freccia su"},
    {"Down", "Freccia giù"},
    {"Left", "Freccia sinistra"},
    {"Right", "Freccia destra"},
    {"Del", "Canc"},
    {"Backspace", "Backspace"},
    {"Menu", "Menu"},
});

/// Calls `part` with each piece between separators.
void Split(std::string_view text, std::string_view separator, const auto& part) {
  while (!text.empty()) {
    const auto end = std::min(text.find(separator), text.size());
    part(text.substr(0, end));
    text.remove_prefix(std::min(end + separator.size(), text.size()));
  }
}

} // namespace

std::span<const GestureEntry> GestureTable() {
  return Table;
}

const GestureEntry& EntryOf(Gesture gesture) {
  const auto* const entry =
      std::find_if(Table.begin(), Table.end(), [gesture](const GestureEntry& e) { return e.gesture == gesture; });
  if (entry == Table.end()) {
    throw std::out_of_range("a gesture without a line in the table");
  }
  return *entry;
}

std::string_view PlaceName(GesturePlace place) {
  switch (place) {
  case P::Window:
    return "In tutta la finestra";
  case P::List:
    return "Nell'elenco";
  case P::Editor:
    return "Nella cella aperta";
  case P::DateField:
    return "In una data";
  case P::BankBox:
    return "In una banca";
  case P::Calendar:
    return "Nel calendario";
  case P::Filter:
    return "Nel filtro";
  case P::Changes:
    return "Nell'elenco delle variazioni";
  case P::Effects:
    return "Nel pannello dell'effetto";
  case P::Help:
    return "In questo elenco di tasti";
  case P::Mouse:
    return "Con il mouse";
  }
  return {};
}

std::vector<std::string_view> KeysOf(const GestureEntry& entry) {
  std::vector<std::string_view> keys;
  Split(entry.keys, "; ", [&keys](std::string_view key) { keys.push_back(key); });
  return keys;
}

std::string ItalianKey(std::string_view key) {
  std::string italian;
  Split(key, "+", [&italian](std::string_view part) {
    const auto* const name =
        std::find_if(KeyNames.begin(), KeyNames.end(), [part](const auto& known) { return known.first == part; });
    italian.append(italian.empty() ? "" : "+").append(name == KeyNames.end() ? part : name->second);
  });
  return italian;
}

std::string ItalianKeys(const GestureEntry& entry) {
  std::string italian(entry.typed);
  for (const std::string_view key : KeysOf(entry)) {
    // The second Enter key does what the first does, wherever there is one.
    if (!key.ends_with("Enter")) {
      italian.append(italian.empty() ? "" : ", ").append(ItalianKey(key));
    }
  }
  return italian;
}

std::string ItalianKey(Gesture gesture) {
  return ItalianKey(KeysOf(EntryOf(gesture)).front());
}

} // namespace lumoscad
