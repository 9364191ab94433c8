/**
 * @file command.h
 * The simulation command as the user writes it, and the words it becomes. No shell is involved.
 */
#ifndef ZAREL_APP_REFINE_COMMAND_H
#define ZAREL_APP_REFINE_COMMAND_H

#include <string>
#include <utility>
#include <vector>

namespace app::refine {

/**
 * Splits a command into words. Blanks separate; '...' keeps all as it stands; "..." and a
 * backslash outside '...' keep the next character. Nothing else is special: no variables, no
 * wildcards, no pipes. Throws the `usage` failure for an open quote or an empty command.
 */
std::vector<std::string> splitCommand(const std::string& command);

/** A name in braces and its value: {"points", "/a/b.csv"}. */
using Placeholders = std::vector<std::pair<std::string, std::string>>;

/** The words with each "{name}" replaced by its value; other braces stay. */
std::vector<std::string> fillPlaceholders(const std::vector<std::string>& words,
                                          const Placeholders& values);

/**
 * Checks that {points} and {results} are both there; if neither is, appends both as the last two
 * words. Throws the `usage` failure if only one is.
 */
std::vector<std::string> withFileArguments(std::vector<std::string> words);

/** Words as one line that a POSIX shell reads back as the same words. */
std::string quoteWords(const std::vector<std::string>& words);

} // namespace app::refine

#endif
