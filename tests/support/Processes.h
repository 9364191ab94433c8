// Several processes within a test: threads with a communicator that carries their messages.
//
// Each rank runs the same body on a thread of its own. Only one rank runs at a time, since objects
// and allocators of the library are for one thread at a time; a rank that waits for a message or in
// a collective call lets others run. Which rank goes on is the system's choice.
#ifndef TESTS_SUPPORT_PROCESSES_H
#define TESTS_SUPPORT_PROCESSES_H

#include <functional>

namespace support {

// Runs `body(rank)` for the ranks 0 to `count` - 1 with a communicator installed whose size() is
// `count` and whose World() is 91. The static cpuNum() is 0 for all: a rank is what the body gets.
//
// Messages go by handle, sender and receiver, in their order. A receiver that asks for another type
// or count than was sent, ranks that meet in different collective calls, ranks that all wait for
// ever, abort and check of a result other than 0 end all ranks with std::runtime_error. What a body
// throws ends all ranks too; the first exception leaves this function. Messages that nobody has
// received fail the test.
//
// Reductions combine the ranks in their order. glbMax and glbMin compare complex numbers by real,
// then imaginary part.
void runProcesses(int count, const std::function<void(int rank)>& body);

} // namespace support

#endif
