#include "utils/Parser.h"

#include <array>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <double-conversion/string-to-double.h>
#include <fast_float/fast_float.h>
#include <limits>
#include <random>
#include <string>

// Numbers from text as in mesh files: our parser compared with double-conversion, which gives identical results, and
// with fast_float. The argument selects the printed form.

namespace {

struct Form {
    const char* format;
    double greatest;
};

constexpr std::array<Form, 5> forms = {{{"%.6f", 1}, {"%.6f", 100}, {"%.9g", 10}, {"%.17g", 1}, {"%e", 1}}};
constexpr int numbers_in_text = 300000;

std::string makeText(const Form& form) {
    std::mt19937_64 random(1);
    std::string text;
    for (int i = 0; i < numbers_in_text; ++i) {
        const double unit = static_cast<double>(random() >> 11) * 0x1p-53;
        std::array<char, 64> buffer = {};
        const int length = std::snprintf(buffer.data(), buffer.size(), form.format, (unit * 2 - 1) * form.greatest);
        text.append(buffer.data(), static_cast<std::size_t>(length)) += i % 3 == 2 ? '\n' : ' ';
    }
    return text;
}

/// `sumAll` reads the whole text, whose numbers are each followed by one byte.
template <class SumAll>
void measure(benchmark::State& state, SumAll sumAll) {
    const Form& form = forms[static_cast<std::size_t>(state.range(0))];
    const std::string text = makeText(form);
    for (auto _ : state)
        benchmark::DoNotOptimize(sumAll(text));
    state.SetItemsProcessed(state.iterations() * numbers_in_text);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
    state.SetLabel(std::string(form.format) + " up to " + std::to_string(static_cast<int>(form.greatest)));
}

void ParseFloat_Velmar(benchmark::State& state) {
    measure(state, [](const std::string& text) {
        Parser parser(text.data(), static_cast<std::uint32_t>(text.size()));
        float sum = 0;
        float value = 0;
        while (parser.parseFloat(value)) {
            sum += value;
            ++parser.pos;
        }
        return sum;
    });
}

void ParseFloat_DoubleConversion(benchmark::State& state) {
    using Converter = double_conversion::StringToDoubleConverter;
    constexpr double failure = std::numeric_limits<double>::quiet_NaN();
    const Converter converter(Converter::ALLOW_TRAILING_JUNK, failure, failure, nullptr, nullptr);
    measure(state, [&converter](const std::string& text) {
        float sum = 0;
        for (std::size_t place = 0; place < text.size();) {
            int processed = 0;
            sum += converter.StringToFloat(text.data() + place, static_cast<int>(text.size() - place), &processed);
            place += static_cast<std::size_t>(processed) + 1;
        }
        return sum;
    });
}

void ParseFloat_FastFloat(benchmark::State& state) {
    measure(state, [](const std::string& text) {
        float sum = 0;
        float value = 0;
        const char* const end = text.data() + text.size();
        for (const char* place = text.data(); place < end;) {
            place = fast_float::from_chars(place, end, value).ptr + 1;
            sum += value;
        }
        return sum;
    });
}

BENCHMARK(ParseFloat_Velmar)->DenseRange(0, static_cast<int>(forms.size()) - 1);
BENCHMARK(ParseFloat_DoubleConversion)->DenseRange(0, static_cast<int>(forms.size()) - 1);
BENCHMARK(ParseFloat_FastFloat)->DenseRange(0, static_cast<int>(forms.size()) - 1);

} // namespace
