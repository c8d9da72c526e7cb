#pragma once

#include "common/Stato.hpp"
#include "platform/Services.hpp"
#include "support/Files.hpp"

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace lumoscad::test {

/// A desktop that plays a script: each list window shown takes the next script and is driven by it. Boxes, pointers
/// and wait windows are recorded.
class ScriptedDesktop final : public Desktop {
 public:
  using Script = std::function<void(ListWindow&)>;
  using ItemScript = std::function<void(SingleItemWindow&)>;

  std::vector<std::string> box;       ///< the texts shown, in order
  std::function<void()> fault;        ///< called before a box is shown; what it throws keeps it away
  std::vector<std::string> titles;    ///< their titles
  std::vector<Pointer> pointers;      ///< every pointer set, in order
  std::vector<std::string> waits;     ///< the texts of the wait windows
  std::vector<int> intervals;         ///< their timers, in milliseconds
  bool waitInterrupted = false;       ///< wait windows end without their work
  std::deque<Script> scripts;         ///< one a list window; a window without a script is closed by its close box
  std::deque<ItemScript> itemScripts; ///< the same for the single-item windows
  std::size_t windows = 0;            ///< list windows shown
  std::size_t breaths = 0;            ///< times that pending events were let run
  std::size_t givenUpAt = 0;          ///< at this row of a list that is being read Esc is pressed; 0: never
  std::size_t readings = 0;           ///< readings of lists that have ended

  void ShowBox(std::string_view text, std::string_view title) override;
  void SetPointer(Pointer puntatore) override;
  void RunPendingEvents() override;
  bool RowRead(std::size_t rows) override;
  void ReadingEnded() noexcept override { ++readings; }
  void ShowList(ListWindow& window) override;
  void ShowSingleItem(SingleItemWindow& window) override;
  void ShowWait(std::string_view text, int milliseconds, const std::function<void()>& work) override;
};

/// A host that keeps its files in memory, records every operation and answers with a prepared reply.
class RecordedHost final : public nexaro::HostLink {
 public:
  std::map<std::string, std::string> file;         ///< host path -> bytes
  std::vector<std::string> operazioni;             ///< "Invia /tmp/x", "Rinomina /tmp/x /tmp/x.dos", ...
  std::vector<std::string> host;                   ///< the address of every operation
  std::vector<std::vector<std::string>> calls;     ///< the parameters of every program call
  std::vector<std::string> uploads;                ///< the bytes of every upload
  std::map<std::string, nexaro::FileState> states; ///< what is said of a file that is looked at
  std::vector<std::size_t> limits;                 ///< how many bytes of a file were asked for, each time
  std::string reply = "<RISPOSTA><MESSAGGIO></MESSAGGIO></RISPOSTA>"; ///< the program's XML answer
  /// Raises what an operation is to fail with; called with the operation's text before it has any effect.
  std::function<void(const std::string& operation)> fault;

  void EseguiProgramma(std::string_view address, std::string_view program, const std::vector<std::string>& parameters,
                       nexaro::XMLParser& recipient) override;
  void RiceviFile(std::string_view address, std::string_view remote, std::string_view locale,
                  std::string& text) override;
  void ReceiveBeginning(std::string_view address, std::string_view remote, std::string_view locale, std::size_t maximum,
                        std::string& text) override;
  void InviaFile(std::string_view address, std::string_view locale, std::string_view remote) override;
  void RinominaFile(std::string_view address, std::string_view remote, std::string_view newName,
                    std::string& text) override;
  void CancellaFile(std::string_view address, std::string_view remote) override;
  [[nodiscard]] nexaro::FileState LookAt(std::string_view address, std::string_view remote) override;

 private:
  void Note(std::string_view address, const std::string& operation);
};

/// Puts a scripted desktop, a recording host, a fixed clock (5 March 2006, 14:07:09), workstation "T01", a private
/// local directory and fresh module-level values in place for the life of the object.
class TestBench {
 private:
  TemporaryFolder folder_; ///< the local directory

 public:
  TestBench();
  TestBench(const TestBench&) = delete;
  TestBench& operator=(const TestBench&) = delete;

  ScriptedDesktop desktop;
  RecordedHost host;
  nexaro::Environment environment;
  DateTime adesso{2006, 3, 5, 14, 7, 9};
  std::vector<std::string> statements; ///< every statement text sent to a database

 private:
  StatoSostituito status_;
  ReplacedServices services_;
};

} // namespace lumoscad::test
