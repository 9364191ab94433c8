// What is passed behind a routine's list of arguments. This program brings routines of its own
// under the library's names and notes the lengths that they are given.
#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <zarel/itf.h>

namespace {

using Lengths = std::vector<std::size_t>;
Lengths noted;
std::vector<std::string> texts;
int number = 0;

char* text(const char* letters) {
  return const_cast<char*>(letters);
}

} // namespace

extern "C" {
int ilaenv_(int*, char* name, char* opts, int*, int*, int*, int* n4, std::size_t nameLength,
            std::size_t optsLength) {
  noted = {nameLength, optsLength};
  texts = {std::string(name, nameLength), std::string(opts, optsLength)};
  return *n4;
}

void xerbla_(char* name, int* argument, std::size_t length) {
  noted = {length};
  texts = {std::string(name, length)};
  number = *argument;
}

double dlamch_(char*, std::size_t length) {
  noted = {length};
  return 1;
}

int lsame_(char*, char*, std::size_t first, std::size_t second) {
  noted = {first, second};
  return 1;
}

void dsaupd_(int*, char*, int*, char*, int*, double* tol, double*, int*, double*, int*, int*, int*,
             double*, double*, int* lworkl, int*, std::size_t bmat, std::size_t which) {
  noted = {bmat, which};
  number = *lworkl + static_cast<int>(*tol);
}

void zneupd_(int* rvec, char*, int*, void*, void*, int*, void*, void*, char*, int*, char*, int*,
             double*, void*, int*, void*, int*, int*, int*, void*, void*, int*, double*, int*,
             std::size_t howmny, std::size_t bmat, std::size_t which) {
  noted = {howmny, bmat, which};
  number = *rvec;
}

void dtrmm_(char*, char*, char*, char*, int*, int*, double*, double*, int*, double*, int* ldb,
            std::size_t a, std::size_t b, std::size_t c, std::size_t d) {
  noted = {a, b, c, d};
  number = *ldb;
}
}

namespace {

TEST(HiddenLengths, OfIlaenvAreThoseOfItsTexts) {
  EXPECT_EQ(ITF_ilaenv(1, text("DGETRF"), text("UN"), 1, 2, 3, 42), 42);
  EXPECT_EQ(noted, (Lengths{6, 2}));
  EXPECT_EQ(texts, (std::vector<std::string>{"DGETRF", "UN"}));

  ITF_ilaenv(1, text("ZUNMQR"), text(""), 1, 2, 3, 4);
  EXPECT_EQ(noted, (Lengths{6, 0}));

  ITF_ilaenv(1, text("DGEMQRT "), text("LTNX"), 1, 2, 3, 4);
  EXPECT_EQ(noted, (Lengths{8, 4}));
}

TEST(HiddenLengths, OfXerblaIsSix) {
  int argument = 7;
  ITF_xerbla(text("DGETRF and more"), &argument);
  EXPECT_EQ(noted, (Lengths{6}));
  EXPECT_EQ(texts[0], "DGETRF");
  EXPECT_EQ(number, 7);
}

TEST(HiddenLengths, OfOptionsAreOneHoweverLongTheTextIs) {
  ITF_dlamch(text("Epsilon"));
  EXPECT_EQ(noted, (Lengths{1}));

  ITF_lsame(text("Upper"), text("U"));
  EXPECT_EQ(noted, (Lengths{1, 1}));

  double value = 0;
  ITF_dtrmm(text("Left"), text("Upper"), text("Trans"), text("Unit"), 1, 1, 1.0, &value, 1, &value,
            9);
  EXPECT_EQ(noted, (Lengths{1, 1, 1, 1}));
  EXPECT_EQ(number, 9);
}

TEST(HiddenLengths, OfTheTwoLettersOfWhichAreOneToo) {
  int ido = 0, info = 0;
  ITF_dsaupd(&ido, text("I"), 1, text("LM"), 1, 3.0, nullptr, 1, nullptr, 1, nullptr, nullptr,
             nullptr, nullptr, 40, &info);
  EXPECT_EQ(noted, (Lengths{1, 1}));
  EXPECT_EQ(number, 43);

  ITF_zneupd(1, text("A"), nullptr, nullptr, nullptr, 1, nullptr, nullptr, text("I"), 1, text("LM"),
             1, 0.0, nullptr, 1, nullptr, 1, nullptr, nullptr, nullptr, nullptr, 1, nullptr, &info);
  EXPECT_EQ(noted, (Lengths{1, 1, 1}));
  EXPECT_EQ(number, 1);
}

} // namespace
