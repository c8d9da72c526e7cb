#include "common/RigaComando.hpp"

#include "platform/RuntimeError.hpp"

namespace lumoscad {

RigaComando::RigaComando(std::string_view comando) : pezzi_(Dividi(comando, ' ')) {}

const std::string* RigaComando::Pezzo(std::size_t posto) const noexcept {
  return posto < pezzi_.size() ? &pezzi_[posto] : nullptr;
}

const std::string& RigaComando::Valore(std::size_t posto, std::string_view nome) const {
  const std::string* const pezzo = Pezzo(posto);
  if (pezzo == nullptr) {
    throw RuntimeError(errors::SubscriptOutOfRange,
                       std::string("Indice non incluso nell'intervallo: manca ").append(nome));
  }
  return *pezzo;
}

} // namespace lumoscad
