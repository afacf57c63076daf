#include "tools/Command.h"
#include "tools/Console.h"
#include "tools/DocumentCheck.h"
#include "tools/Json.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

struct CheckOptions {
    std::vector<std::string> paths;
    std::size_t limit = 100;
    bool json = false;
    bool quiet = false;
};

const char* severityOf(const Finding& finding) {
    return finding.is_error ? "error" : "warning";
}

/// As compilers print theirs, so that editors find the place.
void printFinding(const std::string& path, const Finding& finding) {
    std::string line = path + ":" + std::to_string(finding.line) + ":" + std::to_string(finding.column) + ": " +
                       severityOf(finding) + ": ";
    if (!finding.element.empty()) line += finding.element + ": ";
    line += finding.text + "; " + finding.advice + " [" + finding.code + "]";
    std::printf("%s\n", Text::printable(line).c_str());
}

void print(const std::string& path, const CheckReport& report, bool quiet) {
    for (const Finding& finding : report.findings)
        if (finding.is_error || !quiet) printFinding(path, finding);
    for (const auto& [code, count] : report.omitted)
        printNote(std::string(path).append(": ").append(std::to_string(count)).append(" more of ").append(code));
}

void add(JsonWriter& json, const CheckReport& report) {
    json.add("errors", report.errors);
    json.add("warnings", report.warnings);
    json.beginList("findings");
    for (const Finding& finding : report.findings) {
        json.beginObject();
        json.add("severity", severityOf(finding));
        json.add("code", finding.code);
        json.add("line", std::uint64_t{finding.line});
        json.add("column", std::uint64_t{finding.column});
        json.add("element", finding.element);
        json.add("message", finding.text);
        json.add("advice", finding.advice);
        json.endObject();
    }
    json.endList();
    json.beginObject("omitted");
    for (const auto& [code, count] : report.omitted)
        json.add(code, count);
    json.endObject();
}

/// Checks a document and prints its findings or adds them to an open object of `json`. Returns whether it has no
/// errors.
bool check(const std::string& path, const CheckOptions& options, JsonWriter* json) {
    CheckReport report;
    try {
        report = checkDocument(path, options.limit, options.quiet);
    } catch (...) {
        const std::string message = getCurrentMessage();
        if (json != nullptr) json->add("error", message);
        printError(message);
        return false;
    }
    if (json != nullptr)
        add(*json, report);
    else
        print(path, report, options.quiet);
    return report.errors == 0;
}

void run(const CheckOptions& options) {
    std::optional<JsonReport> report;
    if (options.json) report.emplace("velmar-check-1", "documents");
    bool is_clean = true;
    for (const std::string& path : options.paths) {
        is_clean = check(path, options, report ? report->beginFile(path) : nullptr) && is_clean;
        if (report) report->endFile();
    }
    if (report) report->end();
    if (!is_clean) throw ReportedFailure();
}

} // namespace

Command addCheckCommand(CLI::App& tool) {
    CLI::App* const app = tool.add_subcommand("check", "Looks for faults in scene documents and their files.");
    const auto options = std::make_shared<CheckOptions>();
    app->add_option("SCENE.xml...", options->paths, "Scene documents.")->required();
    constexpr double max_limit = 10'000;
    CommandOptions::addValue(*app, "--limit", options->limit, "COUNT",
                             "Print at most so many findings of a kind of each document.")
        ->check(CommandOptions::inRange(1, max_limit));
    app->add_flag("--json", options->json, "Print JSON, of the schema that docs/check.md describes");
    app->add_flag("-q,--quiet", options->quiet, "Print errors only, no warnings");
    app->footer("Each finding is a line FILE:LINE:COLUMN: error: or warning:, with the element and what to do. Prints "
                "nothing when there is none. Exit codes: 0 no errors, 1 errors, 2 wrong usage.");
    return {app, [options] { run(*options); }};
}
