#include <zarel/C_Entity.h>

#include <ostream>

#include <zarel/bf.h>
#include <zarel/zarelmem.h>

#include "runtime/fail.h"

C_Entity::C_Entity(const std::string& name) : _name(name) {}
C_Entity::C_Entity(const C_Entity& other) : C_CbfObject(other), _name(other._name) {}
C_Entity::~C_Entity() = default;

C_Entity& C_Entity::operator=(const C_Entity& other) {
  if (this != &other) _name = other._name;
  return *this;
}

int C_Entity::Write(FILE* file) {
  return BF_fwrite_str(file, _name.c_str()) == 0 ? 0 : Zarel::traced();
}

int C_Entity::Read(FILE* file) {
  char* text = nullptr;
  if (BF_fread_str(file, &text) != 0) return Zarel::traced();
  struct Release {
    char* block;
    ~Release() { zarelmem_free(block, __FILE__, __LINE__); }
  } const release{text};
  _name = text ? text : "";
  return 0;
}

char const* C_Entity::Type() const {
  return "C_Entity";
}

void C_Entity::Info(std::ostream& out) {
  out << "========================================\n" << Type() << " : " << _name << '\n';
}
