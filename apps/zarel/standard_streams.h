/**
 * @file standard_streams.h
 * Standard output belongs to the program's data.
 */
#ifndef ZAREL_APP_STANDARD_STREAMS_H
#define ZAREL_APP_STANDARD_STREAMS_H

namespace app {

/**
 * Keeps standard output for data: from now on the data goes through a descriptor of its own, and
 * what anything else prints on standard output, such as the library's messages, goes to standard
 * error. Closed standard streams are opened on /dev/null first, so that no file takes their
 * numbers; data for a closed standard output then fails.
 */
void reserveStandardOutput();

/** The descriptor that data is written to. */
int dataDescriptor();

/** Closes it. Returns false if the system reports a failed write only now. */
bool closeDataDescriptor();

} // namespace app

#endif
