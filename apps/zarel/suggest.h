/**
 * @file suggest.h
 * "Did you mean ...?": the nearest of some names.
 */
#ifndef ZAREL_APP_SUGGEST_H
#define ZAREL_APP_SUGGEST_H

#include <string>
#include <string_view>
#include <vector>

namespace app {

/** Edits (insert, remove, replace, swap neighbours) that make one text the other; case ignored. */
int editDistance(std::string_view a, std::string_view b);

/** The candidate nearest to `given`, or nothing if none is near enough to be a slip of the hand. */
std::string nearest(std::string_view given, const std::vector<std::string>& candidates);

/** `did you mean "x"?`, or an empty text. */
std::string didYouMean(std::string_view given, const std::vector<std::string>& candidates);

/** "a, b, c", shortened after `limit` names. */
std::string listed(const std::vector<std::string>& names, std::size_t limit = 20);

} // namespace app

#endif
