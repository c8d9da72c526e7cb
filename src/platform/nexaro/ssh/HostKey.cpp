#include "platform/nexaro/ssh/HostKey.hpp"

#include "platform/base/AsciiCase.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/SigpipeBlock.hpp"
#include "platform/nexaro/Texts.hpp"
#include "platform/nexaro/ssh/Key.hpp"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad::nexaro {

namespace {

struct ReleaseText {
  void operator()(char* text) const { ssh_string_free_char(text); }
};
struct ReleaseEntry {
  void operator()(ssh_knownhosts_entry* entry) const { ssh_knownhosts_entry_free(entry); }
};
struct ReleaseFingerprint {
  void operator()(unsigned char* fingerprint) const { ssh_clean_pubkey_hash(&fingerprint); }
};
using Text = std::unique_ptr<char, ReleaseText>;

Key PresentedKey(const Session& session) {
  ssh_key key = nullptr;
  if (ssh_get_server_publickey(session.Raw(), &key) != SSH_OK) {
    throw LinkError("Collegamento all'host " + session.Host() + ": l'host non ha presentato una chiave.");
  }
  return Key(key);
}

std::string Hash(const Key& key) {
  unsigned char* raw = nullptr;
  std::size_t length = 0;
  if (ssh_get_publickey_hash(key.get(), SSH_PUBLICKEY_HASH_SHA256, &raw, &length) != SSH_OK) {
    throw LinkError("L'impronta della chiave dell'host non può essere calcolata.");
  }
  const std::unique_ptr<unsigned char, ReleaseFingerprint> fingerprint(raw);
  const Text text(ssh_get_fingerprint_hash(SSH_PUBLICKEY_HASH_SHA256, fingerprint.get(), length));
  return text ? text.get() : "";
}

/// The host as the file of known hosts writes it.
std::string KnownName(std::string_view name, unsigned port) {
  const auto host = base::LowerCase(name);
  return port == 22 ? host : "[" + host + "]:" + std::to_string(port);
}

std::string KnownLine(const Key& key, const std::string& name) {
  char* raw = nullptr;
  if (ssh_pki_export_pubkey_base64(key.get(), &raw) != SSH_OK) {
    throw LinkError("La chiave dell'host non può essere scritta.");
  }
  const Text base64(raw);
  return name + " " + ssh_key_type_to_char(ssh_key_type(key.get())) + " " + base64.get();
}

/// The content of the file; `detail` says why it cannot be read. A missing file is an empty one.
std::string ReadKnownHosts(const std::string& knownHosts, std::string& detail) {
  std::string content;
  struct stat state {};
  if (::stat(knownHosts.c_str(), &state) != 0 && errno == ENOENT) {
    return content;
  }
  try {
    const auto file = OpenOrdinary(knownHosts, knownHosts);
    std::array<char, 16384> buffer{};
    for (std::size_t count = 0; (count = ReadBlock(file, buffer, knownHosts)) > 0;) {
      content.append(buffer.data(), count);
    }
  } catch (const RuntimeError& error) {
    detail = error.Text();
  }
  return content;
}

/// A line of the file, without its marker.
struct Line {
  std::string text;
  bool revoked = false;
};

/// Lines that name authorities, and lines with exceptions from a pattern, are left out: no key is accepted by them.
bool ReadLine(std::string_view raw, Line& line) {
  const auto begin = raw.find_first_not_of(" \t");
  if (begin == std::string_view::npos || raw[begin] == '#') {
    return false;
  }
  raw.remove_prefix(begin);
  if (raw.ends_with('\r')) {
    raw.remove_suffix(1);
  }
  line.revoked = raw.starts_with("@revoked");
  if (raw.front() == '@') {
    const auto blank = raw.find_first_of(" \t");
    const auto continuation = blank == std::string_view::npos ? blank : raw.find_first_not_of(" \t", blank);
    if (!line.revoked || continuation == std::string_view::npos) {
      return false;
    }
    raw.remove_prefix(continuation);
  }
  line.text = std::string(raw);
  std::replace(line.text.begin(), line.text.end(), '\t', ' ');
  return line.revoked || raw.substr(0, raw.find_first_of(" \t")).find('!') == std::string_view::npos;
}

/// How one line changes what is known of the key so far.
KeyState Compare(KeyState soFar, const Line& line, const Key& key, const std::string& name) {
  ssh_knownhosts_entry* raw = nullptr;
  if (soFar == KeyState::Revoked || ssh_known_hosts_parse_line(name.c_str(), line.text.c_str(), &raw) != SSH_OK) {
    return soFar;
  }
  const std::unique_ptr<ssh_knownhosts_entry, ReleaseEntry> entry(raw);
  const bool equal = ssh_key_cmp(key.get(), entry->publickey, SSH_KEY_CMP_PUBLIC) == 0;
  if (line.revoked) {
    return equal ? KeyState::Revoked : soFar;
  }
  if (equal) {
    return KeyState::Note;
  }
  if (soFar == KeyState::Note || soFar == KeyState::Changed) {
    return soFar;
  }
  return ssh_key_type(key.get()) == ssh_key_type(entry->publickey) ? KeyState::Changed : KeyState::OtherType;
}

void Search(std::string_view content, const Key& key, const std::string& name, HostKey& examination) {
  for (int number = 1; !content.empty(); ++number) {
    const auto finish = content.find('\n');
    Line line;
    if (ReadLine(content.substr(0, finish), line)) {
      const auto state = Compare(examination.state, line, key, name);
      if (state != examination.state) {
        examination.state = state;
        examination.detail = "riga " + std::to_string(number);
      }
    }
    content = finish == std::string_view::npos ? std::string_view() : content.substr(finish + 1);
  }
}

/// Creates the directory of the file where its parent exists.
void MakeDirectory(const std::string& knownHosts) {
  const auto directory = ParentDirectory(knownHosts);
  if (::mkdir(directory.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
    throw SystemError("Creazione della cartella " + directory, errno);
  }
}

} // namespace

HostKey ExamineKey(const Session& session, unsigned port, const std::string& knownHosts) {
  const auto key = PresentedKey(session);
  const auto name = KnownName(session.Host(), port);
  HostKey examination;
  examination.type = ssh_key_type_to_char(ssh_key_type(key.get()));
  examination.fingerprint = Hash(key);
  examination.line = KnownLine(key, name);
  const auto content = ReadKnownHosts(knownHosts, examination.detail);
  if (!examination.detail.empty()) {
    examination.state = KeyState::Unreadable;
    return examination;
  }
  Search(content, key, name, examination);
  return examination;
}

HostKey AskHostKey(const SshSettings& settings, const std::string& host) {
  const SigpipeBlock sigpipeBlock;
  const Session session(settings, host);
  return ExamineKey(session, settings.port, settings.knownHosts);
}

std::string RefusalReason(const HostKey& key, const std::string& host, const std::string& knownHosts) {
  const auto presented = "L'host " + host + " ha presentato la chiave " + key.type + " " + key.fingerprint;
  const std::string remedy = " Chiedere all'amministratore dell'host se la chiave è stata sostituita: solo in questo "
                             "caso cancellare quella riga e registrare la nuova chiave con «lumoscad --registra-host " +
                             host + "».";
  switch (key.state) {
  case KeyState::Note:
    return {};
  case KeyState::Unknown:
    return presented + ", che non è fra gli host noti (" + knownHosts +
           "). Confrontare l'impronta con quella data dall'amministratore dell'host e registrarla con «lumoscad "
           "--registra-host " +
           host + "».";
  case KeyState::Changed:
    return presented + ", diversa da quella nota (" + knownHosts + ", " + key.detail +
           "): la chiave è cambiata, o un'altra macchina si è messa al posto dell'host." + remedy;
  case KeyState::OtherType:
    return presented + ", di tipo diverso da quella nota (" + knownHosts + ", " + key.detail +
           "): l'host ha cambiato chiavi, o un'altra macchina si è messa al suo posto." + remedy;
  case KeyState::Revoked:
    return presented + ", che è revocata (" + knownHosts + ", " + key.detail +
           "). Avvertire l'amministratore dell'host.";
  case KeyState::Unreadable:
    return presented + ", ma il file degli host noti non può essere letto. " + key.detail +
           " Verificare il file e i suoi permessi.";
  }
  return presented + ".";
}

void AddLine(const std::string& line, const std::string& knownHosts) {
  const auto operation = "Registrazione nel file degli host noti " + knownHosts;
  MakeDirectory(knownHosts);
  base::Descriptor file(
      ::open(knownHosts.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0600));
  struct stat state {};
  if (!file.Opened() || ::fstat(file.Number(), &state) != 0) {
    throw SystemError(operation, errno);
  }
  if (!S_ISREG(state.st_mode)) {
    throw SystemError(operation, EINVAL);
  }
  char last = '\n';
  const bool incomplete = state.st_size > 0 && ::pread(file.Number(), &last, 1, state.st_size - 1) == 1 && last != '\n';
  // One write: whoever else adds to the file cannot get in between.
  const auto text = (incomplete ? "\n" : "") + line + "\n";
  const auto written = ::write(file.Number(), text.data(), text.size());
  if (written != static_cast<ssize_t>(text.size())) {
    throw SystemError(operation, written < 0 ? errno : ENOSPC);
  }
  if (::fsync(file.Number()) != 0 || file.Close() != 0) {
    throw SystemError(operation, errno);
  }
}

} // namespace lumoscad::nexaro
