#pragma once

#include "lumoscad/Host.hpp"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// The locks of the lists, and those of tests that are held. After two failures of the link in a row the rest is not
/// tried.
[[nodiscard]] std::vector<BloccoLista> GuardaBlocchi(std::string_view host);

/// The lock of one list. What fails is told in it.
[[nodiscard]] BloccoLista GuardaBlocco(std::string_view host, std::string_view lista);

/// Removes the lock `visto` unless it has changed. Raises what the link raises.
[[nodiscard]] EsitoBlocco TogliBloccoVisto(std::string_view host, const BloccoLista& visto);

/// Takes a lock that no list uses, reads it, tells who may read it and frees it, and hands each outcome to `mostra`.
/// True when everything works. What `mostra` raises goes on to the caller, and the lock is freed all the same.
bool ProvaBlocco(std::string_view host, const std::function<void(const PassoProva&)>& mostra);

} // namespace lumoscad
