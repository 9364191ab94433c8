/**
 * @file toml_config.h
 * Option files in TOML, as people write them.
 */
#ifndef ZAREL_APP_TOML_CONFIG_H
#define ZAREL_APP_TOML_CONFIG_H

#include <CLI/CLI.hpp>
#include <istream>
#include <string>
#include <vector>

namespace app {

/**
 * Each entry on one line, without comments, without a comma behind the last value of an array.
 * Comments begin with `#` outside of quotes; arrays may go over many lines.
 */
std::string joinedToml(std::istream& input);

/** CLI11's reader of TOML, which takes arrays and comments in simple places only, behind that. */
class TomlConfig : public CLI::ConfigTOML {
public:
  TomlConfig();
  std::vector<CLI::ConfigItem> from_config(std::istream& input) const override;
};

} // namespace app

#endif
