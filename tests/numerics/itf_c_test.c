/* The header as a C program sees it. Returns 0 when the results are right. */
#include <zarel/blas_info.h>
#include <zarel/itf.h>

int main(void) {
  double a[4] = {1, 4, 2, 4}, b[2] = {3, 8};
  float x[2] = {1, 2};
  int pivots[2], info = -1;
  ITF_Complex product;
  ITF_dgetrf(2, 2, a, 2, pivots, &info);
  if (info != 0) return 1;
  ITF_dgetrs("N", 2, 1, a, 2, pivots, b, 2, &info);
  if (info != 0 || b[0] != 1 || b[1] != 1) return 2;
  product = ITF_cdotc(1, x, 1, x, 1);
  if (product.re != 5 || product.im != 0) return 3;
  return zarel_blas_name()[0] ? 0 : 4;
}
