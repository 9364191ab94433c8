// That the generator seeds itself takes a process in which nothing has seeded it.
#include <zarel/mrand.h>

int main() {
  double unseeded[200];
  for (double& x : unseeded)
    x = mrand();
  for (int rest = 200 % 55; rest < 55; ++rest)
    mrand(); // the cursors back to their start
  smrand(3127);
  for (const double x : unseeded)
    if (x != mrand()) return 1;
  return 0;
}
