// The order of the virtual operations.
#include "support/Slots.h"

#include <algorithm>

#include <gtest/gtest.h>
#include <zarel/C_MatMGe.h>
#include <zarel/C_VecPi.h>

namespace {

using support::afterDestructor;
using support::consecutive;
using support::slotsOf;

using Storage = C_Ptr<double, int>;
using Base = C_BaseVec<int>;
using Vec = C_Vec<double, int>;
using Mat = C_Mat<double>;
using MatMGe = C_MatMGe<double>;
using Text = std::string&;

TEST(Slots, OfAStorage) {
  using C = Storage;
  const auto slots = slotsOf(&C::Lnk, &C::Copy, &C::InCore, &C::Load, &C::UnLoad, &C::Resize,
                             &C::Adr, &C::GetVal, &C::SetVal, &C::operator[], &C::Extract, &C::Zero,
                             &C::Init, &C::Sum, &C::SMlt, &C::Nrm2);
  EXPECT_EQ(slots, consecutive(afterDestructor, slots));
  EXPECT_EQ(support::slotOf(&C_PtrInCore<double, int>::Release), slots.back() + 1);
}

TEST(Slots, OfTheBaseOfVectors) {
  using C = Base;
  const auto slots =
      slotsOf(&C::MemSize, &C::InCore, &C::Full, &C::AffType, &C::Type,
              static_cast<int (C::*)(int)>(&C::Write), static_cast<int (C::*)(FILE*)>(&C::Write),
              static_cast<int (C::*)(int)>(&C::Read), static_cast<int (C::*)(FILE*)>(&C::Read),
              static_cast<int (C::*)(char const*)>(&C::WriteMatlab),
              static_cast<int (C::*)(FILE*)>(&C::WriteMatlab),
              static_cast<int (C::*)(char const*, bool)>(&C::Print),
              static_cast<int (C::*)(FILE*)>(&C::Print), &C::Zero, &C::GetVal, &C::FirstVal,
              &C::NextVal, &C::Release, &C::Resize, &C::Nrm, &C::Normalize);
  EXPECT_EQ(slots, consecutive(afterDestructor, slots));
}

TEST(Slots, OfAVectorOnTheCountersSide) {
  using C = Vec;
  const auto slots = slotsOf(
      static_cast<int (C::*)(int, int)>(&C::Read), static_cast<int (C::*)(FILE*, int)>(&C::Read),
      &C::Adr, static_cast<double (C::*)(int)>(&C::GetVal), &C::SetVal, &C::operator[],
      static_cast<int (C::*)(double&)>(&C::FirstVal), static_cast<int (C::*)(double&)>(&C::NextVal),
      &C::Extract, &C::Init, &C::Sum, static_cast<int (C::*)(Vec&)>(&C::Copy), &C::Lnk, &C::Attach,
      &C::SMlt, &C::operator*=, static_cast<Vec& (C::*)(Vec&)>(&C::operator+=),
      static_cast<Vec& (C::*)(double)>(&C::operator+=), &C::operator==, &C::operator*, &C::Axpy,
      &C::operator-=, &C::Had, &C::Diff, &C::Nrm2, &C::NrmInf, &C::IMin, &C::IMax, &C::Send,
      &C::Recv, &C::Bcast);
  EXPECT_EQ(slots, consecutive(afterDestructor, slots));
}

TEST(Slots, OfTheBaseOfMatrices) {
  using C = C_GenericMat;
  const auto slots =
      slotsOf(&C::MemSize, &C::InCore, &C::Sym, &C::GetSide, &C::NbVal, &C::MaxLength, &C::AffType,
              &C::Version, &C::Type, &C::Write, &C::Read,
              static_cast<int (C::*)(char const*)>(&C::WriteMatlab),
              static_cast<int (C::*)(FILE*)>(&C::WriteMatlab),
              static_cast<int (C::*)(FILE*, int)>(&C::Print),
              static_cast<int (C::*)(char const*, int, bool)>(&C::Print), &C::GenCopy, &C::Resize,
              &C::ResizeAndKeepValues, &C::GetVal, &C::Row, &C::NextRow, &C::FirstCol, &C::NextCol,
              &C::EraseCol, &C::EraseRow, &C::Zero, &C::Nrm);
  EXPECT_EQ(slots, consecutive(afterDestructor, slots));
}

TEST(Slots, OfAMatrixOnTheCountersSide) {
  using C = Mat;
  const auto slots =
      slotsOf(&C::Lnk, &C::Duplicate, &C::Adr, static_cast<double (C::*)(int, int)>(&C::GetVal),
              &C::SetVal, &C::GetCol, static_cast<int (C::*)(double&)>(&C::FirstCol),
              static_cast<int (C::*)(double&)>(&C::NextCol), &C::Init, &C::Mv, &C::Axpy,
              &C::operator*=, &C::Factor, &C::Solve);
  EXPECT_EQ(slots, consecutive(afterDestructor, slots));
}

TEST(Slots, OfAGeneralMatrixStandBehindTheInheritedOnes) {
  const auto own = slotsOf(&MatMGe::LeadDim, &MatMGe::MM);
  EXPECT_TRUE(std::is_sorted(own.begin(), own.end()));
  EXPECT_GT(own.front(), support::slotOf(&Mat::Solve));
}

} // namespace
