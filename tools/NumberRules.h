#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

/// What is wrong with the numbers of an element.
struct NumberFault {
    bool is_error;
    /// The name in the catalogue, docs/check.md.
    const char* code;
    std::string text;
    /// What to do about it.
    std::string advice;
};

/// Looks at the numbers of the element `element` inside of `parent`: whether they are finite and in the range that
/// makes sense there, whether a direction points somewhere, and whether a matrix can be inverted.
std::optional<NumberFault> findNumberFault(std::string_view parent, std::string_view element,
                                           std::span<const double> numbers);

/// A number as documents have it.
std::string describeNumber(double number);
