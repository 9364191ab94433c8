#include <zarel/C_Communicator.h>

#include <utility>

C_Communicator* C_Communicator::S_comm = nullptr;

C_Communicator::C_Communicator() : C_Communicator(0, 1) {}
C_Communicator::C_Communicator(int process, int count) : _cpuNum(process), _size(count) {}
C_Communicator::~C_Communicator() = default;

C_Communicator* C_Communicator::Instance() {
  return S_comm;
}

void C_Communicator::setInstance(C_Communicator* communicator) {
  S_comm = communicator;
}

void C_Communicator::kill() {
  delete S_comm;
  S_comm = nullptr;
}

int C_Communicator::World() {
  return 0;
}

std::string C_Communicator::CreateDName(std::string prefix, std::string suffix) {
  if (_size != 1) prefix += std::to_string(_cpuNum);
  return std::move(prefix) + std::move(suffix);
}

// One process has nobody to talk to, and its own values are the result of every reduction.
void C_Communicator::abort(int, int) {}
void C_Communicator::barrier(int) {}
void C_Communicator::check(int) {}

void C_Communicator::exchange(int, int, int*, int*, int*, int*, int*) {}
void C_Communicator::exchange(int, int, int*, int*, int**, int*, int**) {}
void C_Communicator::exchange(int, int, int*, int*, double**, int*, double**) {}

void C_Communicator::glbMax(int, std::complex<double>*) {}
void C_Communicator::glbMax(int, double*) {}
void C_Communicator::glbMax(int, __int64*) {}
void C_Communicator::glbMax(int, int*) {}
void C_Communicator::glbMin(int, std::complex<double>*) {}
void C_Communicator::glbMin(int, double*) {}
void C_Communicator::glbMin(int, __int64*) {}
void C_Communicator::glbMin(int, int*) {}
void C_Communicator::glbOr(int, int*) {}
void C_Communicator::glbOr(int, bool*) {}

#define ZAREL_SUM(T)                                                                               \
  void C_Communicator::glbSum(int, T*) {}
#define ZAREL_BCAST(T)                                                                             \
  void C_Communicator::Bcast(T*, int, int) {}
#define ZAREL_MESSAGE(T)                                                                           \
  void C_Communicator::send(int, int, T*, int) {}                                                  \
  void C_Communicator::recv(int, int, T*, int) {}
#define ZAREL_FOR_EACH_NUMBER(X)                                                                   \
  X(std::complex<double>) X(std::complex<float>) X(double) X(float) X(__int64) X(int) X(short int)

ZAREL_FOR_EACH_NUMBER(ZAREL_SUM)
ZAREL_FOR_EACH_NUMBER(ZAREL_BCAST)
ZAREL_BCAST(char)
ZAREL_BCAST(bool)
ZAREL_FOR_EACH_NUMBER(ZAREL_MESSAGE)
ZAREL_MESSAGE(char)
