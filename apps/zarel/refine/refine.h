/**
 * @file refine.h
 * `zarel refine`: simulate, fit, propose, until the models are good enough.
 */
#ifndef ZAREL_APP_REFINE_REFINE_H
#define ZAREL_APP_REFINE_REFINE_H

#include "cli.h"

namespace app {

/** Adds the subcommand. */
void addRefine(CLI::App& root, Globals& globals);

} // namespace app

#endif
