// Roots of the class tree that have next to no body. Their destructors stand here so that each
// virtual table has one home.
#include <zarel/C_CbfObject.h>
#include <zarel/C_ProgressEngine.h>
#include <zarel/C_Type.h>
#include <zarel/C_ZarelBase.h>

C_Type::~C_Type() = default;

C_CbfObject::~C_CbfObject() = default;
int C_CbfObject::TypeCBF() const {
  return -1;
}
char const* C_CbfObject::Version() const {
  return "1";
}
int C_CbfObject::VersionInt() const {
  return 1;
}
int C_CbfObject::Info(std::string&) {
  return 0;
}

int C_CbfObject::write_function(FILE* file, void* object) {
  return static_cast<C_CbfObject*>(object)->Write(file);
}

void* C_CbfObject::read_function(FILE* file, void** object, int* result) {
  *result = static_cast<C_CbfObject*>(*object)->Read(file);
  return *object;
}

namespace Zarel {

C_ZarelBase::~C_ZarelBase() = default;

C_ProgressEngine::C_ProgressEngine(int id) : _id(id), _end(0), _type(E_ProgressType(0)) {}
C_ProgressEngine::~C_ProgressEngine() = default;

void C_ProgressEngine::SetUp(char*, double end, E_ProgressType type) {
  _end = end;
  _type = type;
}

void C_ProgressEngine::Update(int) {}
void C_ProgressEngine::Update(int, double) {}
void C_ProgressEngine::Finish() {}
void C_ProgressEngine::checkAbort() {}

} // namespace Zarel
