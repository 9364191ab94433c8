#include "cli.h"
#include "standard_streams.h"

#include <cstdio>

int main(int argc, char** argv) {
  app::reserveStandardOutput();
  const int code = app::run(argc, argv);
  if (app::closeDataDescriptor() || code != 0) return code;
  std::fputs("zarel: error: standard output could not be written to the end\n", stderr);
  return static_cast<int>(app::ExitCode::io);
}
