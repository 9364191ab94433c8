/**
 * @file svd.h
 * `zarel svd`: singular value decompositions of sets of vectors.
 */
#ifndef ZAREL_APP_SVD_SVD_H
#define ZAREL_APP_SVD_SVD_H

#include "cli.h"

namespace app {

/** Adds the subcommand. */
void addSvd(CLI::App& root, Globals& globals);

} // namespace app

#endif
