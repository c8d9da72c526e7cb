#include "platform/nexaro/OperationsTrial.hpp"

#include "platform/nexaro/File.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/ProgramSearch.hpp"
#include "platform/nexaro/SigpipeBlock.hpp"
#include "platform/nexaro/Texts.hpp"

#include <array>
#include <exception>
#include <random>
#include <unistd.h>

namespace lumoscad::nexaro {

namespace {

constexpr const char* DefaultProgram = "VB0001";
/// With line breaks and letters that an encoding could change on the way there and back.
constexpr std::string_view Content = "Prova di LumoScad\r\nperché, così, più\r\n";

std::string ReadContent(const std::string& path) {
  const auto operation = "Lettura del file " + Quote(path);
  const auto file = OpenOrdinary(path, operation);
  std::array<char, 4096> buffer{};
  const auto count = ReadBlock(file, buffer, operation);
  return {buffer.data(), count};
}

/// One test, step after step.
class Attempt {
 public:
  Attempt(HostLink& link, std::string host, const Environment& environment,
          const std::function<void(const StepOutcome&)>& show)
      : link_(link), host_(std::move(host)), show_(show) {
    std::random_device random;
    const auto name = environment.CodicePostazione + ".prova." + std::to_string(random());
    locale_ = environment.CartellaLocale + "/" + name;
    remote_ = "/tmp/" + name;
  }
  Attempt(const Attempt&) = delete;
  Attempt& operator=(const Attempt&) = delete;
  ~Attempt() {
    try {
      if (tried_ && !deleted_) {
        static_cast<void>(Erase());
      }
    } catch (...) { // NOLINT(bugprone-empty-catch): what ended the test is what counts
    }
    ::unlink(locale_.c_str());
  }

  bool Run(const std::string& program) {
    TryFile();
    Step("EseguiProgramma", [&] { return TryProgram(program); });
    return succeeded_;
  }

 private:
  void TryFile() {
    if (Step("InviaFile", [this] { return Send(); })) {
      Step("RiceviFile", [this] { return Receive(remote_); });
      Step("RinominaFile", [this] {
        std::string text;
        link_.RinominaFile(host_, remote_, Complete(), text);
        return Receive(Complete());
      });
    } else {
      Skip("RiceviFile");
      Skip("RinominaFile");
    }
    // Also after a failure a file may stand there.
    if (tried_) {
      Step("CancellaFile", [this] { return Erase(); });
    } else {
      Skip("CancellaFile");
    }
  }

  void Skip(const char* operation) const { show_({operation, false, "non provato: nessun file è stato inviato"}); }

  template <typename Action> bool Step(const char* operation, Action action) {
    StepOutcome outcome{operation, false, {}};
    try {
      outcome.detail = action();
      outcome.succeeded = true;
    } catch (...) {
      outcome.detail = CurrentError().Text();
      succeeded_ = false;
    }
    show_(outcome);
    return outcome.succeeded;
  }

  std::string Send() {
    const auto operation = "Scrittura del file " + Quote(locale_);
    TemporaryFile file(locale_, 0600, operation);
    file.Write(Content, operation);
    file.Publish(locale_, operation);
    tried_ = true;
    link_.InviaFile(host_, locale_, remote_);
    return "il file " + Quote(remote_) + " è sull'host";
  }

  std::string Receive(const std::string& remote) {
    std::string text;
    link_.RiceviFile(host_, remote, locale_, text);
    if (ReadContent(locale_) != Content) {
      throw LinkError("Il file " + Quote(remote) + " è tornato diverso da come è stato inviato.");
    }
    return "il file " + Quote(remote) + " è tornato uguale";
  }

  /// Which of its two names the file has is not known after a failure.
  std::string Erase() {
    deleted_ = true;
    std::exception_ptr fault;
    for (const auto& name : {remote_, Complete()}) {
      try {
        Remove(name);
      } catch (const RuntimeError&) {
        fault = fault ? fault : std::current_exception();
      }
    }
    if (fault) {
      std::rethrow_exception(fault);
    }
    return "il file non c'è più, né come " + Quote(remote_) + " né come " + Quote(Complete());
  }

  void Remove(const std::string& remote) {
    link_.CancellaFile(host_, remote);
    try {
      static_cast<void>(Receive(remote));
    } catch (const RuntimeError& error) {
      if (error.Number() == errors::FileNotFound) {
        return;
      }
      throw;
    }
    throw LinkError("Il file " + Quote(remote) + " è ancora sull'host.");
  }

  std::string TryProgram(const std::string& program) {
    if (!program.empty()) {
      XMLParser reader;
      std::string root;
      reader.Parse = [&root](const xml::Nodo& node) { root = node.name; };
      link_.EseguiProgramma(host_, program, {}, reader);
      return program + " ha risposto con l'elemento XML " + Quote(root);
    }
    auto* lookUp = dynamic_cast<ProgramSearch*>(&link_);
    if (lookUp == nullptr) {
      throw LinkError("Il trasporto non sa cercare un programma senza avviarlo.");
    }
    return Quote(lookUp->FindProgram(host_, DefaultProgram)) + " è pronto e non è stato avviato";
  }

  [[nodiscard]] std::string Complete() const { return remote_ + ".dos"; }

  HostLink& link_;
  std::string host_;
  const std::function<void(const StepOutcome&)>& show_;
  std::string locale_;
  std::string remote_;
  bool tried_ = false;   ///< the file may stand on the host
  bool deleted_ = false; ///< its removal was tried
  bool succeeded_ = true;
};

} // namespace

bool TryOperations(HostLink& link, const std::string& host, const std::string& program, const Environment& environment,
                   const std::function<void(const StepOutcome&)>& show) {
  // Where nobody reads any more what `show` writes, the test still goes to its end, and its file with it.
  const SigpipeBlock sigpipeBlock;
  return Attempt(link, host, environment, show).Run(program);
}

} // namespace lumoscad::nexaro
