#pragma once

#include <string>

namespace Preview {

/// Writes "velmar preview: <text>" to the standard error stream, each text once in the life of the process: what isn't
/// rendered is worth one line, however many objects ask for it. Never throws. Safe from any thread.
void report(const std::string& text) noexcept;

} // namespace Preview
