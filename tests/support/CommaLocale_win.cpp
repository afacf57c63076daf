#include "tests/support/CommaLocale.h"

#include <clocale>
#include <stdexcept>
#include <string>

namespace TestSupport {

struct CommaLocale::State {
    std::string before = std::setlocale(LC_ALL, nullptr);
};

CommaLocale::CommaLocale() : state(std::make_unique<State>()) {
    if (std::setlocale(LC_ALL, "German_Germany.1252") == nullptr) throw std::runtime_error("there is no German locale");
}

CommaLocale::~CommaLocale() {
    std::locale::global(before);
    std::setlocale(LC_ALL, state->before.c_str());
}

} // namespace TestSupport
