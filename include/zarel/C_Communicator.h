/**
 * @file C_Communicator.h
 * The seam through which a host brings several processes.
 */
#ifndef ZAREL_C_COMMUNICATOR_H
#define ZAREL_C_COMMUNICATOR_H

#include <complex>
#include <string>

#include <zarel/export.h>

/**
 * Messages and reductions between the processes of one run.
 *
 * The library has no process layer of its own. A host that has one derives a class, hands it the
 * number of the process and the count of processes, and installs it with setInstance before the
 * first transfer. All operations of this class do nothing, which is right for a run of one
 * process: a reduction over one process leaves its values as they are.
 *
 * Arrays belong to the caller and hold `count` values; the reductions change them in place, and
 * every process calls them with the same count, in the same order.
 *
 * Failures: none here. What a host's class does when a message fails is its own affair; an
 * exception passes through the library.
 * Threads: install the communicator before parallel work starts; the class has no lock.
 *
 * The virtual functions stand in a fixed order, on which the binary interface rests: new ones go to
 * the end.
 */
class ZAREL_API C_Communicator {
public:
  /** The communicator of a run of one process. */
  C_Communicator();
  C_Communicator(const C_Communicator&) = delete;
  C_Communicator& operator=(const C_Communicator&) = delete;
  virtual ~C_Communicator();

  /** Returns the handle of the communicator that holds all processes; 0 here. */
  virtual int World();
  /**
   * Forms a file name that no other process has: prefix, process number, suffix. With one process
   * the number is left out.
   */
  virtual std::string CreateDName(std::string prefix, std::string suffix);

  /** Ends all processes of `handle` with the exit code `code`. */
  virtual void abort(int handle, int code);
  /** Returns when all processes of `handle` have come here. */
  virtual void barrier(int handle);
  /** Takes the result `result` of a message-level call and deals with a failure. */
  virtual void check(int result);

  /** @name Exchange with neighbours
   * Each process of `handle` sends to and receives from `neighbours` others, whose numbers stand in
   * `ranks`: neighbour k gets `sendCounts[k]` values and gives `recvCounts[k]`. In the first form
   * the values for all neighbours stand one after the other; in the others each neighbour has an
   * array of its own. @{ */
  virtual void exchange(int handle, int neighbours, int* ranks, int* sendCounts, int* sendValues,
                        int* recvCounts, int* recvValues);
  virtual void exchange(int handle, int neighbours, int* ranks, int* sendCounts, int** sendValues,
                        int* recvCounts, int** recvValues);
  virtual void exchange(int handle, int neighbours, int* ranks, int* sendCounts,
                        double** sendValues, int* recvCounts, double** recvValues);
  /** @} */

  /** @name Reductions over all processes, value by value
   * glbOr of `int` joins bits. The order of complex numbers for glbMax and glbMin is the host's.
   * @{ */
  virtual void glbMax(int count, std::complex<double>* values);
  virtual void glbMax(int count, double* values);
  virtual void glbMax(int count, __int64* values);
  virtual void glbMax(int count, int* values);
  virtual void glbMin(int count, std::complex<double>* values);
  virtual void glbMin(int count, double* values);
  virtual void glbMin(int count, __int64* values);
  virtual void glbMin(int count, int* values);
  virtual void glbOr(int count, int* values);
  virtual void glbOr(int count, bool* values);
  virtual void glbSum(int count, std::complex<double>* values);
  virtual void glbSum(int count, std::complex<float>* values);
  virtual void glbSum(int count, double* values);
  virtual void glbSum(int count, float* values);
  virtual void glbSum(int count, __int64* values);
  virtual void glbSum(int count, int* values);
  virtual void glbSum(int count, short int* values);
  /** @} */

  /** @name Broadcast
   * All processes get the values of the process `root`. @{ */
  virtual void Bcast(char* values, int count, int root);
  virtual void Bcast(std::complex<double>* values, int count, int root);
  virtual void Bcast(std::complex<float>* values, int count, int root);
  virtual void Bcast(double* values, int count, int root);
  virtual void Bcast(float* values, int count, int root);
  virtual void Bcast(__int64* values, int count, int root);
  virtual void Bcast(int* values, int count, int root);
  virtual void Bcast(bool* values, int count, int root);
  virtual void Bcast(short int* values, int count, int root);
  /** @} */

  /** @name Messages from one process to another
   * `handle` is the communicator that both belong to. Messages between two processes arrive in the
   * order in which they were sent; send may return before the message has arrived. @{ */
  virtual void send(int handle, int destination, char* values, int count);
  virtual void send(int handle, int destination, std::complex<double>* values, int count);
  virtual void send(int handle, int destination, std::complex<float>* values, int count);
  virtual void send(int handle, int destination, double* values, int count);
  virtual void send(int handle, int destination, float* values, int count);
  virtual void send(int handle, int destination, __int64* values, int count);
  virtual void send(int handle, int destination, int* values, int count);
  virtual void send(int handle, int destination, short int* values, int count);
  virtual void recv(int handle, int source, char* values, int count);
  virtual void recv(int handle, int source, std::complex<double>* values, int count);
  virtual void recv(int handle, int source, std::complex<float>* values, int count);
  virtual void recv(int handle, int source, double* values, int count);
  virtual void recv(int handle, int source, float* values, int count);
  virtual void recv(int handle, int source, __int64* values, int count);
  virtual void recv(int handle, int source, int* values, int count);
  virtual void recv(int handle, int source, short int* values, int count);
  /** @} */

  /** Returns the number of this process, 0 for the first. */
  int cpuNum() const { return _cpuNum; }
  /** Returns the count of processes. */
  int size() const { return _size; }

  /** Shows the installed communicator; null until setInstance. */
  static C_Communicator* Instance();
  /** Installs a communicator, or none with null. It stays the caller's until kill; a former one is
   * not deleted. */
  static void setInstance(C_Communicator* communicator);
  /** Deletes the installed communicator, which must come from `new`, and shows none from then on.
   * May be called repeatedly. */
  static void kill();

protected:
  /** Process `process` of `count`. */
  explicit C_Communicator(int process, int count = 1);

  int _cpuNum; ///< the number of this process
  int _size;   ///< the count of processes

  static C_Communicator* S_comm; ///< the installed communicator
};

namespace Zarel {
using ::C_Communicator;
}

#endif
