#include "utils/NumericLocale.h"

#include <locale.h>
#include <string>

namespace Velmar {

struct PlainNumericLocale::State {
    int mode_before;
    std::string name_before;
};

PlainNumericLocale::PlainNumericLocale() : state(std::make_unique<State>()) {
    // Copied before anything is changed: exhausted memory must leave the host's locale alone.
    const char* const name = setlocale(LC_NUMERIC, nullptr);
    if (name != nullptr) state->name_before = name;
    state->mode_before = _configthreadlocale(_ENABLE_PER_THREAD_LOCALE);
    setlocale(LC_NUMERIC, "C");
}

PlainNumericLocale::~PlainNumericLocale() {
    setlocale(LC_NUMERIC, state->name_before.c_str());
    if (state->mode_before != -1) _configthreadlocale(state->mode_before);
}

} // namespace Velmar
