/**
 * @file doe.h
 * `zarel doe`: designs of experiments.
 */
#ifndef ZAREL_APP_DOE_DOE_H
#define ZAREL_APP_DOE_DOE_H

#include "cli.h"

namespace app {

/** Adds the subcommand. */
void addDoe(CLI::App& root, Globals& globals);

} // namespace app

#endif
