// Every name of the frozen list is a function of the shared library, and there is no other ITF_ one
// in the table (tools/itf/check_table.py compares the two).
#include <dlfcn.h>

#include <fstream>
#include <set>
#include <string>

#include <gtest/gtest.h>

namespace {

std::set<std::string> frozenNames() {
  std::ifstream file(ITF_NAMES_FILE);
  std::set<std::string> names;
  for (std::string name; file >> name;)
    EXPECT_TRUE(names.insert(name).second) << name << " twice";
  return names;
}

TEST(ExportedNames, Are1220) {
  EXPECT_EQ(frozenNames().size(), 1220u);
}

TEST(ExportedNames, AllResolveInTheSharedLibrary) {
  // RTLD_NOW: what the functions forward to must resolve as well.
  void* library = dlopen(ZAREL_SHARED_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();

  for (const auto& name : frozenNames()) {
    void* symbol = dlsym(library, ("ITF_" + name).c_str());
    ASSERT_NE(symbol, nullptr) << name;
    Dl_info info;
    ASSERT_NE(dladdr(symbol, &info), 0) << name;
    EXPECT_STREQ(info.dli_sname, ("ITF_" + name).c_str());
  }
}

} // namespace
