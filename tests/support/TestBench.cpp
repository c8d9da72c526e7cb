#include "support/TestBench.hpp"

#include "platform/RuntimeError.hpp"
#include "platform/xml/Nodo.hpp"
#include "support/Files.hpp"

#include <filesystem>
#include <fstream>

namespace lumoscad::test {
namespace {} // namespace

void ScriptedDesktop::ShowBox(std::string_view text, std::string_view title) {
  if (fault) {
    fault();
  }
  box.emplace_back(text);
  titles.emplace_back(title);
}

void ScriptedDesktop::SetPointer(Pointer puntatore) {
  pointers.push_back(puntatore);
}

void ScriptedDesktop::RunPendingEvents() {
  ++breaths;
}

bool ScriptedDesktop::RowRead(std::size_t rows) {
  RunPendingEvents();
  return givenUpAt == 0 || rows < givenUpAt;
}

void ScriptedDesktop::ShowList(ListWindow& window) {
  ++windows;
  if (!scripts.empty()) {
    const Script script = scripts.front();
    scripts.pop_front();
    script(window);
  }
  if (!window.Stato().unloaded) {
    window.Form_QueryUnload();
  }
}

void ScriptedDesktop::ShowSingleItem(SingleItemWindow& window) {
  ++windows;
  if (!itemScripts.empty()) {
    const ItemScript script = itemScripts.front();
    itemScripts.pop_front();
    script(window);
  }
  if (!window.Elenco().Stato().unloaded) {
    window.Elenco().Form_QueryUnload();
  }
}

void ScriptedDesktop::ShowWait(std::string_view text, int milliseconds, const std::function<void()>& work) {
  waits.emplace_back(text);
  intervals.push_back(milliseconds);
  if (!waitInterrupted) {
    work();
  }
}

void RecordedHost::Note(std::string_view address, const std::string& operation) {
  operazioni.push_back(operation);
  host.emplace_back(address);
  if (fault) {
    fault(operation);
  }
}

void RecordedHost::EseguiProgramma(std::string_view address, std::string_view program,
                                   const std::vector<std::string>& parameters, nexaro::XMLParser& recipient) {
  Note(address, "Esegui " + std::string(program));
  calls.push_back(parameters);
  recipient.started = true;
  recipient.Consegna(xml::Read(reply));
}

void RecordedHost::ReceiveBeginning(std::string_view address, std::string_view remote, std::string_view locale,
                                    std::size_t maximum, std::string& text) {
  limits.push_back(maximum);
  RiceviFile(address, remote, locale, text);
  if (std::filesystem::file_size(locale) > maximum) {
    std::filesystem::resize_file(locale, maximum);
  }
}

void RecordedHost::RiceviFile(std::string_view address, std::string_view remote, std::string_view locale,
                              std::string&) {
  Note(address, "Ricevi " + std::string(remote));
  const auto trovato = file.find(std::string(remote));
  if (trovato == file.end()) {
    throw RuntimeError(errors::FileNotFound, "File inesistente sull'host: " + std::string(remote));
  }
  std::ofstream(std::string(locale), std::ios::binary) << trovato->second;
}

void RecordedHost::InviaFile(std::string_view address, std::string_view locale, std::string_view remote) {
  Note(address, "Invia " + std::string(remote));
  uploads.push_back(FileText(std::string(locale)));
  file[std::string(remote)] = uploads.back();
}

void RecordedHost::RinominaFile(std::string_view address, std::string_view remote, std::string_view newName,
                                std::string&) {
  Note(address, "Rinomina " + std::string(remote) + " " + std::string(newName));
  auto node = file.extract(std::string(remote));
  if (node.empty()) {
    throw RuntimeError(errors::FileNotFound, "File inesistente sull'host: " + std::string(remote));
  }
  file[std::string(newName)] = std::move(node.mapped());
}

void RecordedHost::CancellaFile(std::string_view address, std::string_view remote) {
  Note(address, "Cancella " + std::string(remote));
  file.erase(std::string(remote));
}

nexaro::FileState RecordedHost::LookAt(std::string_view address, std::string_view remote) {
  Note(address, "Guarda " + std::string(remote));
  if (!file.contains(std::string(remote))) {
    throw RuntimeError(errors::FileNotFound, "File inesistente sull'host: " + std::string(remote));
  }
  return states[std::string(remote)];
}

TestBench::TestBench()
    : environment{"T01", folder_.Path().string()},
      services_({[this]() -> Desktop& { return desktop; }, [this]() -> nexaro::HostLink& { return host; },
                 [this]() -> const nexaro::Environment& { return environment; }, [this] { return adesso; },
                 [this](std::string_view statement) { statements.emplace_back(statement); }}) {}

} // namespace lumoscad::test
