#pragma once

#include <CLI/CLI.hpp>
#include <string>

/// Lays out `--help` for a terminal: each option with its argument and, wrapped beside it, what it does and its
/// default.
class HelpFormatter final : public CLI::Formatter {
  public:
    HelpFormatter();

    std::string make_option_opts(const CLI::Option* option) const override;
    std::string make_option_desc(const CLI::Option* option) const override;
    std::string make_option_usage(const CLI::Option* option) const override;
    std::string make_footer(const CLI::App* app) const override;
};
