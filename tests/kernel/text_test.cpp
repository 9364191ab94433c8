#include "kernel/records.h"

#include <cmath>
#include <cstdio>
#include <string>

#include "support/Capture.h"
#include "support/FailingAllocation.h"

using namespace kernel;
using testing::ElementsAre;

namespace {

// A stream that holds a text.
struct Text {
  explicit Text(const std::string& text) : stream(std::tmpfile()) {
    std::fwrite(text.data(), 1, text.size(), stream);
    std::rewind(stream);
  }
  ~Text() { std::fclose(stream); }
  Text(const Text&) = delete;
  Text& operator=(const Text&) = delete;
  std::string content() {
    std::string all(100000, '\0');
    std::rewind(stream);
    all.resize(std::fread(&all[0], 1, all.size(), stream));
    return all;
  }
  FILE* stream;
};

std::string hexadecimal(const void* p) {
  char text[40];
  std::snprintf(text, sizeof text, "0x%lx", reinterpret_cast<unsigned long>(p));
  return text;
}

class TextForms : public Kernel {};

TEST_F(TextForms, OutputCharacterByCharacter) {
  Text t("");
  v_foutput(t.stream, vec({1, -2.5, 1e100, 1.0 / 3, 0, 7}).get());
  m_foutput(t.stream, mat(2, 1, {1, 2}).get());
  px_foutput(t.stream, perm({1, 0}).get());
  iv_foutput(t.stream, ivec({-3, 40}).get());
  lv_foutput(t.stream, lvec({5}).get());
  v_foutput(t.stream, nullptr);
  m_foutput(t.stream, nullptr);
  EXPECT_EQ(t.content(),
            "Vector: dim: 6\n"
            "             1           -2.5         1e+100    0.333333333              0 \n"
            "             7 \n"
            "Matrix: 2 by 1\nrow 0:\n             1 \nrow 1:\n             2 \n"
            "Permutation: size: 2\n0->1 1->0 \n"
            "IntVector: dim: 2\n      -3       40 \n"
            "LongVector: dim: 1\n       5 \n"
            "Vector: NULL\nMatrix: NULL\n");
}

TEST_F(TextForms, DumpTellsTheAddresses) {
  const auto x = vec({1, 2});
  const auto p = perm({0});
  VEC hollow = {2, 2, nullptr};
  Text t("");
  v_dump(t.stream, x.get());
  v_dump(t.stream, &hollow);
  v_dump(t.stream, nullptr);
  px_dump(t.stream, p.get());
  iv_dump(t.stream, nullptr);
  lv_dump(t.stream, nullptr);
  EXPECT_EQ(t.content(), "Vector: dim: 2 @ " + hexadecimal(x.get()) + "\nx->ve @ " +
                             hexadecimal(x->ve) + "\n             1              2 \n" +
                             "Vector: dim: 2 @ " + hexadecimal(&hollow) + "\nNULL\n" +
                             "Vector: NULL\nPermutation: size: 1 @ " + hexadecimal(p.get()) +
                             "\npx->pe @ " + hexadecimal(p->pe) +
                             "\n0->0 \nIntVector: NULL\nLongVector: NULL\n");
  const auto A = mat(1, 2, {3, 4});
  const auto said = support::capture([&] {
    m_dump(nullptr, A.get());
    std::fflush(stdout);
  });
  EXPECT_EQ(said.out, "Matrix: 1 by 2 @ " + hexadecimal(A.get()) + "\nA->me @ " +
                          hexadecimal(A->me) + ", A->base @ " + hexadecimal(A->base) +
                          "\nrow 0: @ " + hexadecimal(A->me[0]) +
                          "\n             3              4 \n");
}

// All lengths around the ends of lines; nine digits keep a value to half a unit of the ninth.
TEST_F(TextForms, WhatOutputWritesInputReads) {
  Random random(30);
  for (int n = 0; n < 23; ++n) {
    Text t("");
    auto x = vec(std::vector<double>(n));
    random.fill(x->ve, n);
    auto A = mat(n % 5, n);
    random.fill(A.get());
    auto px = own(LM_px_get("t", 0, n, 0, nullptr, &status));
    for (int i = 0; i + 1 < n; i += 2)
      std::swap(px->pe[i], px->pe[i + 1]);
    auto iv = ivec(std::vector<int>(n, -123456789));
    auto lv = lvec(std::vector<int>(n, 2147483647));
    v_foutput(t.stream, x.get());
    m_foutput(t.stream, A.get());
    px_foutput(t.stream, px.get());
    iv_foutput(t.stream, iv.get());
    lv_foutput(t.stream, lv.get());
    std::rewind(t.stream);
    const auto x2 = own(LM_v_finput(t.stream, nullptr, 0, nullptr, &status));
    const auto A2 = own(LM_m_finput(t.stream, mat(2, 2).release(), 0, nullptr, &status));
    const auto px2 = own(LM_px_finput(t.stream, nullptr, 0, nullptr, &status));
    const auto iv2 = own(LM_iv_finput(t.stream, ivec({1, 2, 3}).release(), 0, nullptr, &status));
    const auto lv2 = own(LM_lv_finput(t.stream, nullptr, 0, nullptr, &status));
    ASSERT_EQ(status, 0);
    ASSERT_EQ(x2->dim, x->dim);
    for (int i = 0; i < n; ++i)
      ASSERT_NEAR(x2->ve[i], x->ve[i], 5e-9 * std::fabs(x->ve[i]));
    ASSERT_EQ(A2->m, A->m);
    ASSERT_EQ(A2->n, A->n);
    const auto a = list(A.get()), a2 = list(A2.get());
    for (std::size_t k = 0; k < a.size(); ++k)
      ASSERT_NEAR(a2[k], a[k], 5e-9 * std::fabs(a[k]));
    ASSERT_EQ(list(px2.get()), list(px.get()));
    ASSERT_EQ(list(iv2.get()), list(iv.get()));
    ASSERT_EQ(list(lv2.get()), list(lv.get()));
  }
}

TEST_F(TextForms, InputSkipsJunkAndTakesUnusualNumbers) {
  Text t("# a comment\n\n  Vector: # here it comes\n dim: 5\n1 # one\n+2 -inf nan 0x10");
  auto x = own(LM_v_finput(t.stream, nullptr, 0, nullptr, &status));
  ASSERT_TRUE(x);
  EXPECT_EQ(x->ve[1], 2);
  EXPECT_TRUE(std::isinf(x->ve[2]));
  EXPECT_TRUE(std::isnan(x->ve[3]));
  EXPECT_EQ(x->ve[4], 16);
}

TEST_F(TextForms, JunkEndsAtTheNextThing) {
  Text t("  # one\n\t# two\n  x");
  EXPECT_EQ(skipjunk(t.stream), 0);
  EXPECT_EQ(std::getc(t.stream), 'x');
  EXPECT_EQ(skipjunk(t.stream), -1);
  EXPECT_EQ(skipjunk(nullptr), -1);
}

TEST_F(TextForms, WrongTextsAreError6AndChangeNothing) {
  auto x = vec({5});
  auto A = mat(1, 1, {5});
  auto px = perm({0});
  auto iv = ivec({5});
  const auto vector = [&](const char* text) {
    return LM_v_finput(Text(text).stream, x.get(), 0, nullptr, &status);
  };
  const auto matrix = [&](const char* text) {
    return LM_m_finput(Text(text).stream, A.get(), 0, nullptr, &status);
  };
  const auto permutation = [&](const char* text) {
    return LM_px_finput(Text(text).stream, px.get(), 0, nullptr, &status);
  };
  const auto integers = [&](const char* text) {
    return LM_iv_finput(Text(text).stream, iv.get(), 0, nullptr, &status);
  };
  for (const char* text : {"Vector: NULL", "Matrix: 1 by 1", "Vector: dim: x", "Vector: dim: -1",
                           "Vector: dim: 1 1.2.3", "Vector: dim: 1 abc", "Vector: dim: 1 12z",
                           "Vector: dim: 2147483648 1", "Vector: dim: 99999999999999999999 1",
                           "Vector: dim: 1.5 1", "vector: dim: 1 1"})
    EXPECT_FAILS(6, vector(text));
  const std::string longNumber = "Vector: dim: 1 " + std::string(100, '1');
  EXPECT_FAILS(6, vector(longNumber.c_str()));
  for (const char* text : {"Matrix: 1 on 1", "Matrix: 1 by 1 row 1: 2", "Matrix: 1 by 1 row 0 2",
                           "Matrix: 1 by 1 row 0: x", "Matrix: 0 by 2000000000"})
    EXPECT_FAILS(6, matrix(text));
  for (const char* text : {"Permutation: size: 2 0->0 1->0", "Permutation: size: 2 0->1 1->2",
                           "Permutation: size: 2 1->0 0->1", "Permutation: size: 1 0-0"})
    EXPECT_FAILS(6, permutation(text));
  for (const char* text : {"IntVector: dim: 1 1.5", "IntVector: dim: 1 2147483648",
                           "IntVector: dim: 1 --1", "LongVector: dim: 1 1"})
    EXPECT_FAILS(6, integers(text));
  EXPECT_THAT(list(x.get()), ElementsAre(5));
  EXPECT_THAT(list(A.get()), ElementsAre(5));
  EXPECT_THAT(list(px.get()), ElementsAre(0));
  EXPECT_THAT(list(iv.get()), ElementsAre(5));
}

// Cut off anywhere, a text is an error, and a claim of many values takes no memory.
TEST_F(TextForms, TextsThatEndAreError7AndForMatrices18) {
  const std::string vector = "Vector: dim: 3\n 1 2 ",
                    matrix = "Matrix: 2 by 2\nrow 0: 1 2\nrow 1: 3 ";
  for (std::size_t n = 0; n <= vector.size(); ++n) {
    EXPECT_FAILS(7, LM_v_finput(Text(vector.substr(0, n)).stream, nullptr, 0, nullptr, &status));
  }
  for (std::size_t n = 0; n <= matrix.size(); ++n)
    EXPECT_FAILS(18, LM_m_finput(Text(matrix.substr(0, n)).stream, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(7,
               LM_v_finput(Text("Vector: dim: 2147483647 1").stream, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(18, LM_m_finput(Text("Matrix: 2147483647 by 2147483647 row 0: 1").stream, nullptr, 0,
                               nullptr, &status));
  EXPECT_FAILS(8, LM_v_finput(nullptr, nullptr, 0, nullptr, &status));
  EXPECT_FAILS(8, LM_m_finput(nullptr, nullptr, 0, nullptr, &status));
}

TEST_F(TextForms, FailingAllocationsAreError3) {
  auto x = vec({5});
  const long failures = support::forEachFailingAllocation([&] {
    Text t("Vector: dim: 3 1 2 3");
    VEC* const read = LM_v_finput(t.stream, x.get(), 0, nullptr, &status);
    const support::Unharmed unharmed;
    if (read) return;
    EXPECT_EQ(lastError(), 3);
    EXPECT_THAT(list(x.get()), ElementsAre(5));
  });
  EXPECT_GE(failures, 2);
  EXPECT_THAT(list(x.get()), ElementsAre(1, 2, 3));
}

} // namespace
