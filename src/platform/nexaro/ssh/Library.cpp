// The functions of libssh that the link calls, each handed on to the library, which is loaded when the first of them is
// called. A command that asks no host does not pay for it: with what it needs in turn (libcrypto, Kerberos) it is nine
// libraries, and a fifth of the start of a program. Weak, so that a test can put one of its own in the place of each.

#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/Texts.hpp"

#include <libssh/callbacks.h>
#include <libssh/libssh.h>

#include <dlfcn.h>

namespace {

/// The header is that of this version of the library's interface.
constexpr const char* FileName = "libssh.so.4";

[[noreturn]] void Missing() {
  const char* const reason = ::dlerror();
  throw lumoscad::nexaro::LinkError("La libreria " + std::string(FileName) + " del collegamento SSH non si carica (" +
                                    lumoscad::nexaro::ForeignText(reason == nullptr ? "" : reason) +
                                    "). Chiedere all'amministratore di questa macchina di installarla.");
}

/// Never closed: a thread of the library's may be at work at the end of the process.
void* Library() {
  static void* const Loaded = [] {
    void* const handle = ::dlopen(FileName, RTLD_LAZY | RTLD_LOCAL);
    if (handle == nullptr) {
      Missing();
    }
    return handle;
  }();
  return Loaded;
}

void* Find(const char* name) {
  void* const found = ::dlsym(Library(), name);
  if (found == nullptr) {
    Missing();
  }
  return found;
}

/// Calls the library's function `name`, which is of the type of `Own`.
template <auto* Own, typename... Arguments> auto Call(const char* name, Arguments... arguments) {
  static const auto Its = reinterpret_cast<decltype(Own)>(Find(name));
  return Its(arguments...);
}

} // namespace

extern "C" {

[[gnu::weak]] int ssh_blocking_flush(ssh_session session, int timeout) {
  return Call<&ssh_blocking_flush>("ssh_blocking_flush", session, timeout);
}

[[gnu::weak]] void ssh_channel_free(ssh_channel channel) {
  Call<&ssh_channel_free>("ssh_channel_free", channel);
}

[[gnu::weak]] ssh_channel ssh_channel_new(ssh_session session) {
  return Call<&ssh_channel_new>("ssh_channel_new", session);
}

[[gnu::weak]] int ssh_channel_open_session(ssh_channel channel) {
  return Call<&ssh_channel_open_session>("ssh_channel_open_session", channel);
}

[[gnu::weak]] int ssh_channel_request_exec(ssh_channel channel, const char* cmd) {
  return Call<&ssh_channel_request_exec>("ssh_channel_request_exec", channel, cmd);
}

[[gnu::weak]] int ssh_channel_request_send_signal(ssh_channel channel, const char* signum) {
  return Call<&ssh_channel_request_send_signal>("ssh_channel_request_send_signal", channel, signum);
}

[[gnu::weak]] int ssh_channel_request_subsystem(ssh_channel channel, const char* subsystem) {
  return Call<&ssh_channel_request_subsystem>("ssh_channel_request_subsystem", channel, subsystem);
}

[[gnu::weak]] int ssh_channel_send_eof(ssh_channel channel) {
  return Call<&ssh_channel_send_eof>("ssh_channel_send_eof", channel);
}

[[gnu::weak]] int ssh_channel_write(ssh_channel channel, const void* data, uint32_t len) {
  return Call<&ssh_channel_write>("ssh_channel_write", channel, data, len);
}

[[gnu::weak]] void ssh_clean_pubkey_hash(unsigned char** hash) {
  Call<&ssh_clean_pubkey_hash>("ssh_clean_pubkey_hash", hash);
}

[[gnu::weak]] int ssh_connect(ssh_session session) {
  return Call<&ssh_connect>("ssh_connect", session);
}

[[gnu::weak]] void ssh_disconnect(ssh_session session) {
  Call<&ssh_disconnect>("ssh_disconnect", session);
}

[[gnu::weak]] int ssh_event_add_session(ssh_event event, ssh_session session) {
  return Call<&ssh_event_add_session>("ssh_event_add_session", event, session);
}

[[gnu::weak]] int ssh_event_dopoll(ssh_event event, int timeout) {
  return Call<&ssh_event_dopoll>("ssh_event_dopoll", event, timeout);
}

[[gnu::weak]] void ssh_event_free(ssh_event event) {
  Call<&ssh_event_free>("ssh_event_free", event);
}

[[gnu::weak]] ssh_event ssh_event_new() {
  return Call<&ssh_event_new>("ssh_event_new");
}

[[gnu::weak]] int ssh_event_remove_session(ssh_event event, ssh_session session) {
  return Call<&ssh_event_remove_session>("ssh_event_remove_session", event, session);
}

[[gnu::weak]] void ssh_free(ssh_session session) {
  Call<&ssh_free>("ssh_free", session);
}

[[gnu::weak]] const char* ssh_get_error(void* error) {
  return Call<&ssh_get_error>("ssh_get_error", error);
}

[[gnu::weak]] char* ssh_get_fingerprint_hash(enum ssh_publickey_hash_type type, unsigned char* hash, size_t len) {
  return Call<&ssh_get_fingerprint_hash>("ssh_get_fingerprint_hash", type, hash, len);
}

[[gnu::weak]] int ssh_get_publickey_hash(const ssh_key key, enum ssh_publickey_hash_type type, unsigned char** hash,
                                         size_t* hlen) {
  return Call<&ssh_get_publickey_hash>("ssh_get_publickey_hash", key, type, hash, hlen);
}

[[gnu::weak]] int ssh_get_server_publickey(ssh_session session, ssh_key* key) {
  return Call<&ssh_get_server_publickey>("ssh_get_server_publickey", session, key);
}

[[gnu::weak]] int ssh_is_connected(ssh_session session) {
  return Call<&ssh_is_connected>("ssh_is_connected", session);
}

[[gnu::weak]] int ssh_key_cmp(const ssh_key k1, const ssh_key k2, enum ssh_keycmp_e what) {
  return Call<&ssh_key_cmp>("ssh_key_cmp", k1, k2, what);
}

[[gnu::weak]] void ssh_key_free(ssh_key key) {
  Call<&ssh_key_free>("ssh_key_free", key);
}

[[gnu::weak]] enum ssh_keytypes_e ssh_key_type(const ssh_key key) {
  return Call<&ssh_key_type>("ssh_key_type", key);
}

[[gnu::weak]] const char* ssh_key_type_to_char(enum ssh_keytypes_e type) {
  return Call<&ssh_key_type_to_char>("ssh_key_type_to_char", type);
}

[[gnu::weak]] int ssh_known_hosts_parse_line(const char* host, const char* line, struct ssh_knownhosts_entry** entry) {
  return Call<&ssh_known_hosts_parse_line>("ssh_known_hosts_parse_line", host, line, entry);
}

[[gnu::weak]] void ssh_knownhosts_entry_free(struct ssh_knownhosts_entry* entry) {
  Call<&ssh_knownhosts_entry_free>("ssh_knownhosts_entry_free", entry);
}

[[gnu::weak]] ssh_session ssh_new() {
  return Call<&ssh_new>("ssh_new");
}

[[gnu::weak]] int ssh_options_set(ssh_session session, enum ssh_options_e type, const void* value) {
  return Call<&ssh_options_set>("ssh_options_set", session, type, value);
}

[[gnu::weak]] int ssh_pki_export_pubkey_base64(const ssh_key key, char** base64) {
  return Call<&ssh_pki_export_pubkey_base64>("ssh_pki_export_pubkey_base64", key, base64);
}

[[gnu::weak]] int ssh_pki_import_privkey_file(const char* filename, const char* passphrase, ssh_auth_callback asked,
                                              void* userdata, ssh_key* pkey) {
  return Call<&ssh_pki_import_privkey_file>("ssh_pki_import_privkey_file", filename, passphrase, asked, userdata, pkey);
}

[[gnu::weak]] int ssh_remove_channel_callbacks(ssh_channel channel, ssh_channel_callbacks cb) {
  return Call<&ssh_remove_channel_callbacks>("ssh_remove_channel_callbacks", channel, cb);
}

[[gnu::weak]] int ssh_service_request(ssh_session session, const char* service) {
  return Call<&ssh_service_request>("ssh_service_request", session, service);
}

[[gnu::weak]] int ssh_set_agent_socket(ssh_session session, socket_t fd) {
  return Call<&ssh_set_agent_socket>("ssh_set_agent_socket", session, fd);
}

[[gnu::weak]] void ssh_set_blocking(ssh_session session, int blocking) {
  Call<&ssh_set_blocking>("ssh_set_blocking", session, blocking);
}

[[gnu::weak]] int ssh_set_channel_callbacks(ssh_channel channel, ssh_channel_callbacks cb) {
  return Call<&ssh_set_channel_callbacks>("ssh_set_channel_callbacks", channel, cb);
}

[[gnu::weak]] void ssh_set_counters(ssh_session session, ssh_counter scounter, ssh_counter rcounter) {
  Call<&ssh_set_counters>("ssh_set_counters", session, scounter, rcounter);
}

[[gnu::weak]] void ssh_string_free_char(char* s) {
  Call<&ssh_string_free_char>("ssh_string_free_char", s);
}

[[gnu::weak]] int ssh_userauth_agent(ssh_session session, const char* username) {
  return Call<&ssh_userauth_agent>("ssh_userauth_agent", session, username);
}

[[gnu::weak]] int ssh_userauth_list(ssh_session session, const char* username) {
  return Call<&ssh_userauth_list>("ssh_userauth_list", session, username);
}

[[gnu::weak]] int ssh_userauth_none(ssh_session session, const char* username) {
  return Call<&ssh_userauth_none>("ssh_userauth_none", session, username);
}

[[gnu::weak]] int ssh_userauth_publickey(ssh_session session, const char* username, const ssh_key privkey) {
  return Call<&ssh_userauth_publickey>("ssh_userauth_publickey", session, username, privkey);
}

} // extern "C"
