/**
 * @file picture.h
 * The picture of a design: every pair of factors against each other.
 */
#ifndef ZAREL_APP_DOE_PICTURE_H
#define ZAREL_APP_DOE_PICTURE_H

#include "doe/design.h"
#include "svg.h"

namespace app::doe {

/** Most factors that a picture shows, and most dots in it. */
constexpr std::size_t mostPictured = 20;
constexpr double mostDots = 400000;

/**
 * Panels of all pairs below the diagonal, the names and the values of each factor on it. Points are
 * told apart by where they come from. Throws `usage` for a design that is too large.
 */
Chart designChart(const Design& design);

} // namespace app::doe

#endif
