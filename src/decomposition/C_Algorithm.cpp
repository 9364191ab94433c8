#include <zarel/C_Algorithm.h>

#include <ostream>

using Zarel::C_ZarelMessage;

C_ItfAlgorithm::~C_ItfAlgorithm() = default;

Zarel::C_ProgressEngine* C_ItfAlgorithm::getProgressEngine() {
  return _progress;
}

C_Algorithm::C_Algorithm(std::string const& name) : C_Entity(name) {}
C_Algorithm::C_Algorithm(const C_Algorithm& other) = default;
C_Algorithm& C_Algorithm::operator=(const C_Algorithm& other) = default;
C_Algorithm::~C_Algorithm() = default;

char const* C_Algorithm::Type() const {
  return "C_Algorithm";
}

void C_Algorithm::Info(std::ostream& out) {
  C_Entity::Info(out);
}

Zarel::E_DebugScope_enum C_Algorithm::GetDebugScope() {
  return Zarel::E_ScopeNone;
}

int C_Algorithm::Run(C_ItfAlgorithm&) {
  return 0;
}

// The operations of one table. Names are taken by value, as hosts that override them expect.
// NOLINTBEGIN(performance-unnecessary-value-param)
#define ZAREL_OPTION(T, LETTER, TABLE)                                                             \
  void C_Algorithm::setOption(std::string name, T value) {                                         \
    TABLE[name] = value;                                                                           \
  }                                                                                                \
  void C_Algorithm::getOption(std::string name, T& value) {                                        \
    value = TABLE[name];                                                                           \
  }                                                                                                \
  bool C_Algorithm::isOption_##LETTER(std::string name) {                                          \
    return TABLE.count(name) != 0;                                                                 \
  }                                                                                                \
  T C_Algorithm::getOption_##LETTER(std::string name) {                                            \
    return TABLE[name];                                                                            \
  }
ZAREL_OPTION(bool, b, _boolOptions)
ZAREL_OPTION(int, i, _intOptions)
ZAREL_OPTION(double, d, _doubleOptions)
ZAREL_OPTION(std::string, s, _stringOptions)
#undef ZAREL_OPTION
// NOLINTEND(performance-unnecessary-value-param)

void C_Algorithm::DisplayConfiguration(C_ZarelMessage& message) {
  if (!message.IsActive()) return;
  message.Append("\n\nAlgorithm Name : %s\n\n", Nom());
  AffOptions(message);
}

void C_Algorithm::AffOptions(C_ZarelMessage& message) {
  if (!message.IsActive()) return;
  message.Append("\nLIST OF OPTIONS:\n\n");
  for (const auto& [name, value] : _boolOptions)
    message.Append("  %20s [bool] :   %s\n", name.c_str(), value ? "true" : "false");
  for (const auto& [name, value] : _intOptions)
    message.Append("  %20s  [int] :   %d\n", name.c_str(), value);
  for (const auto& [name, value] : _doubleOptions)
    message.Append("  %20s  [dbl] :   %g\n", name.c_str(), value);
  for (const auto& [name, value] : _stringOptions)
    message.Append("  %20s  [str] :   %s\n", name.c_str(), value.c_str());
  if (_boolOptions.empty() && _intOptions.empty() && _doubleOptions.empty() &&
      _stringOptions.empty())
    message.Append("  No active Options\n");
  message.Print();
}

void C_Algorithm::InitOptions() {}
