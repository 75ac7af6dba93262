#pragma once
// The layout of the help, for the parser: 80 columns, and no words that only programmers know.

#include <CLI/CLI.hpp>

#include <string>

class cHelpText : public CLI::Formatter {
  public:
    cHelpText();

    std::string of(CLI::App const &command) const;
    // The help without the explanations and examples after the options.
    std::string short_of(CLI::App const &command) const;

  private:
    std::string make_option(CLI::Option const *option, bool is_positional) const override;
    std::string make_option_name(CLI::Option const *option, bool is_positional) const override;
    std::string make_option_usage(CLI::Option const *option) const override;
    std::string make_option_opts(CLI::Option const *option) const override;
    std::string make_option_desc(CLI::Option const *option) const override;
};
