/**
 * @file columns.h
 * Choosing columns of a table by name or number.
 */
#ifndef ZAREL_APP_COLUMNS_H
#define ZAREL_APP_COLUMNS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace app {

using Columns = std::vector<std::size_t>;

/**
 * Finds columns by a text: names between commas; `#3` or `3` for the third column, when none is
 * called so; `3-5` for a range of them; or one number N alone for the first N of `candidates`.
 * Throws `badInput` for a column that is not there, is named by two headers, or stands twice.
 * @param names all names of the file
 * @param candidates columns that a lone N counts among
 * @param option and file: for the messages
 */
Columns selectColumns(std::string_view text, const std::vector<std::string>& names,
                      const Columns& candidates, const std::string& option,
                      const std::string& file);

/** The position of a name; throws `badInput` with a suggestion if it is not there just once. */
std::size_t findColumn(std::string_view name, const std::vector<std::string>& names,
                       const std::string& file);

/** 0 .. count-1. */
Columns allColumns(std::size_t count);

/** Those of 0 .. count-1 that are not in `taken`. */
Columns otherColumns(std::size_t count, const Columns& taken);

} // namespace app

#endif
