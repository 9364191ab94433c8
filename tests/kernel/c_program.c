/* A host in C: it solves a system, keeps a sparse vector and a set, and reads the errors. */
#include <zarel/erreur.h>
#include <zarel/lm.h>

static int failures = 0;

static void expect(int holds) {
  if (!holds) ++failures;
}

static double half(double x) {
  return x / 2;
}

static void solve(void) {
  int status;
  MAT* A = LM_m_get("host", 0, 2, 2, 0, 0, &status);
  PERM* pivot = LM_px_get("host", 0, 2, 0, 0, &status);
  VEC* b = LM_v_get("host", 0, 2, 0, 0, &status);
  VEC* x = 0;
  A->me[0][0] = 2;
  A->me[0][1] = 1;
  A->me[1][0] = 1;
  A->me[1][1] = 3;
  b->ve[0] = 4;
  b->ve[1] = 7;
  LM_LUfactor(A, pivot, 0, 0, &status);
  x = LM_LUsolve(A, pivot, b, x, 0, 0, &status);
  expect(status == 0 && x->ve[0] == 1 && x->ve[1] == 2);
  x = LM_v_map(half, x, x, 0, 0, &status);
  expect(x->ve[1] == 1);
  expect(v_free_vars(&b, &x, (VEC**)0) == 2);
  m_free(A);
  px_free(pivot);
}

static void keepSparse(void) {
  int status, i, sum = 0;
  VECM* v = LM_vecm_get(100, 1, &status);
  BVEC* set = LM_bv_get("host", 0, LM_BV_BLOC, 10, 0, 0, &status);
  LM_vecm_addval(v, 42, 1.5, 0);
  expect(LM_vecm_getval(v, 42, &status) == 1.5);
  vecm_free(v);
  LM_bv_insere(set, 3, &status);
  LM_bv_insere(set, 4, &status);
  LM_bv_initialize(set);
  for (i = LM_bv_on_suivant(set); i >= 0; i = LM_bv_on_suivant(set))
    sum += i;
  expect(sum == 7);
  LM_bv_free(set);
}

static void readErrors(void) {
  int status;
  ZCOMPLEX zero = zmake(0, 0);
  zarel_setErrorBox(zarel_silentErrorBox); /* no message tool stands behind this host */
  LM_error_clear();
  zinv(zero, 1, "host", &status);
  expect(status == -1 && LM_error_count() == 1 && LM_error_get(0)->number == 4);
  expect(mem_info_is_on() == 0);
}

int main(void) {
  init_kernel();
  solve();
  keepSparse();
  readErrors();
  smrand(1);
  expect(mrand() >= 0);
  return failures;
}
