#include "utils/NumericLocale.h"

#include <clocale>

namespace Velmar {

struct PlainNumericLocale::State {
    locale_t plain;
    locale_t before;
};

PlainNumericLocale::PlainNumericLocale() : state(std::make_unique<State>()) {
    state->plain = newlocale(LC_ALL_MASK, "C", locale_t{});
    if (state->plain != locale_t{}) state->before = uselocale(state->plain);
}

PlainNumericLocale::~PlainNumericLocale() {
    if (state->plain != locale_t{}) {
        uselocale(state->before);
        freelocale(state->plain);
    }
}

} // namespace Velmar
