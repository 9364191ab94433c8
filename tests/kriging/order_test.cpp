// The order of the virtual operations, which derived classes built elsewhere rely on. The numbers
// follow from the published list; overloads are counted and, having no address of their own name,
// seen through their neighbours.
#include <cstdint>
#include <cstring>

#include "kriging/ModelFixture.h"

namespace {

/// The place of a virtual operation in its table, destructors first, in the Itanium C++ ABI.
template <class Operation>
std::int64_t slotOf(Operation operation) {
  std::intptr_t word = 0;
  std::memcpy(&word, &operation, sizeof word);
  return word % 2 == 1 ? (word - 1) / static_cast<std::intptr_t>(sizeof(void*)) : -1;
}

} // namespace

#if defined(__x86_64__)

TEST(KrigingOperations, StandInTheirOrder) {
  using K = Kriging<double>;
  EXPECT_EQ(slotOf(&K::Version), 2);
  EXPECT_EQ(slotOf(&K::PutNumVar), 3);
  EXPECT_EQ(slotOf(&K::GetNumVar), 4);
  EXPECT_EQ(slotOf(&K::PutNumSol), 5);
  EXPECT_EQ(slotOf(&K::GetNumSol), 6);
  EXPECT_EQ(slotOf(&K::PutDropToler), 7);
  EXPECT_EQ(slotOf(&K::GetDropToler), 8);
  EXPECT_EQ(slotOf(&K::GetOptNumSamp), 9);
  EXPECT_EQ(slotOf(&K::SetOptNumSamp), 10);
  EXPECT_EQ(slotOf(&K::PutNumSamp), 11);
  EXPECT_EQ(slotOf(&K::GetNumSamp), 12);
  EXPECT_EQ(slotOf(&K::PutMaxNumIter), 13);
  EXPECT_EQ(slotOf(&K::GetMaxNumIter), 14);
  EXPECT_EQ(slotOf(&K::PutInpSampMtx), 15);
  EXPECT_EQ(slotOf(&K::GetInpSampMtx), 16);
  EXPECT_EQ(slotOf(&K::PutOutSampMtx), 17);
  EXPECT_EQ(slotOf(&K::GetOutSampMtx), 18);
  EXPECT_EQ(slotOf(&K::AppendSampData), 19);
  EXPECT_EQ(slotOf(&K::PutKernVec), 20);
  EXPECT_EQ(slotOf(&K::GetKernVec), 21);
  EXPECT_EQ(slotOf(&K::PutSolnType), 22);
  EXPECT_EQ(slotOf(&K::PutCorrFuncType), 24);
  EXPECT_EQ(slotOf(&K::PutKrigingKernVarType), 26);
  EXPECT_EQ(slotOf(&K::PutKrigingKernOptType), 29);
  EXPECT_EQ(slotOf(&K::PutLowerKernelMultiplierBound), 31);
  EXPECT_EQ(slotOf(&K::GetLowerKernelMultiplierBound), 32);
  EXPECT_EQ(slotOf(&K::PutUpperKernelMultiplierBound), 33);
  EXPECT_EQ(slotOf(&K::GetUpperKernelMultiplierBound), 34);
  EXPECT_EQ(slotOf(&K::PutScalingType), 35);
  EXPECT_EQ(slotOf(&K::PutPolynomType), 37);
  EXPECT_EQ(slotOf(&K::SetStep), 39);
  EXPECT_EQ(slotOf(&K::GetKrigingStatus), 40);
  EXPECT_EQ(slotOf(&K::ReSolve), 43);
  EXPECT_EQ(slotOf(&K::EvalModelAndPredictor), 46);
  EXPECT_EQ(slotOf(&K::EvalSampCorrAndPol), 47);
  EXPECT_EQ(slotOf(&K::CheckRelativeError), 55);
  EXPECT_EQ(slotOf(&K::CheckError), 56);
  EXPECT_EQ(slotOf(&K::Write), 60);
  EXPECT_EQ(slotOf(&K::Read), 61);
  EXPECT_EQ(slotOf(&K::ReadOld), 62);
  EXPECT_EQ(slotOf(&K::GetNumGlobalSol), 63);
  EXPECT_EQ(slotOf(&K::GetVecGlobalSol), 64);
  EXPECT_EQ(slotOf(&K::GetInpScaleVec), 65);
  EXPECT_EQ(slotOf(&K::GetInpInterceptVec), 66);
  EXPECT_EQ(slotOf(&K::GetOutScaleVec), 67);
  EXPECT_EQ(slotOf(&K::GetOutInterceptVec), 68);
  EXPECT_EQ(slotOf(&K::GetCorrCoeff), 69);
  EXPECT_EQ(slotOf(&K::GetPolyCoeff), 70);
  EXPECT_EQ(slotOf(&K::GetNumKern), 71);
  EXPECT_EQ(slotOf(&K::GetNumCorrCoef), 72);
  EXPECT_EQ(slotOf(&K::GetNumPolyCoeff), 73);
  EXPECT_EQ(slotOf(&K::GetProcVarnc), 74);
  EXPECT_EQ(slotOf(&K::CheckNewPoints), 79);
  EXPECT_EQ(slotOf(&K::PutInpTestMtx), 80);
  EXPECT_EQ(slotOf(&K::IsInputPoint), 81);
  EXPECT_EQ(slotOf(&K::GetTestRelativeErrorDim), 82);
  EXPECT_EQ(slotOf(&K::TestRelativeError), 83);
  EXPECT_EQ(slotOf(&K::InvScaleSample), 84);
  EXPECT_EQ(slotOf(&K::ScaleSample), 85);
  EXPECT_EQ(slotOf(&K::EvalCorrMtx), 86);
  EXPECT_EQ(slotOf(&K::EvalQuadPolynomMtx), 87);
  EXPECT_EQ(slotOf(&K::EvalCorrVal), 88);
  EXPECT_EQ(slotOf(&K::GetRelativePredictorErrorNorm), 89);
  EXPECT_EQ(slotOf(&K::GetOutputGlobalRange), 90);
  EXPECT_EQ(slotOf(&K::GetRelativePredictorError), 91);
  EXPECT_EQ(slotOf(&K::ISSolveRequired), 92);
  EXPECT_EQ(slotOf(&K::DiagOfCovarMtx), 93);
  EXPECT_EQ(slotOf(&K::InitKriging), 94);
  EXPECT_EQ(slotOf(&K::GetFittingCriteria), 95);
  EXPECT_EQ(slotOf(&K::Stop), 96);
  EXPECT_EQ(slotOf(&K::ClearTemporaryMatrices), 97);
}

TEST(KrigingListOperations, StandInTheirOrder) {
  using L = KrigingList<double>;
  EXPECT_EQ(slotOf(&L::Version), 2);
  EXPECT_EQ(slotOf(&L::PutNumKriging), 3);
  EXPECT_EQ(slotOf(&L::GetNumKriging), 4);
  EXPECT_EQ(slotOf(&L::PutNumVar), 5);
  EXPECT_EQ(slotOf(&L::GetNumVar), 6);
  EXPECT_EQ(slotOf(&L::PutNumSol), 7);
  EXPECT_EQ(slotOf(&L::GetOptNumSamp), 8);
  EXPECT_EQ(slotOf(&L::SetOptNumSamp), 9);
  EXPECT_EQ(slotOf(&L::PutNumSamp), 10);
  EXPECT_EQ(slotOf(&L::GetNumSamp), 11);
  EXPECT_EQ(slotOf(&L::PutInpSampMtx), 12);
  EXPECT_EQ(slotOf(&L::GetInpSampMtx), 13);
  EXPECT_EQ(slotOf(&L::PutOutSampMtx), 14);
  EXPECT_EQ(slotOf(&L::GetOutSampMtx), 15);
  EXPECT_EQ(slotOf(&L::AppendSampData), 16);
  EXPECT_EQ(slotOf(&L::GetKernVec), 17);
  EXPECT_EQ(slotOf(&L::PutCorrFuncType), 18);
  EXPECT_EQ(slotOf(&L::PutKrigingKernVarType), 19);
  EXPECT_EQ(slotOf(&L::PutKrigingKernOptType), 20);
  EXPECT_EQ(slotOf(&L::PutScalingType), 21);
  EXPECT_EQ(slotOf(&L::PutPolynomType), 22);
  EXPECT_EQ(slotOf(&L::SetStep), 23);
  EXPECT_EQ(slotOf(&L::Solve), 24);
  EXPECT_EQ(slotOf(&L::ReSolve), 25);
  EXPECT_EQ(slotOf(&L::EvalModelAndPredictor), 28);
  EXPECT_EQ(slotOf(&L::EvalTestModel), 29);
  EXPECT_EQ(slotOf(&L::CheckRelativeError), 30);
  EXPECT_EQ(slotOf(&L::Write), 31);
  EXPECT_EQ(slotOf(&L::Read), 32);
  EXPECT_EQ(slotOf(&L::PutInpTestMtx), 33);
  EXPECT_EQ(slotOf(&L::EvaluateNumberOfNewPointsRequired), 34);
}

#endif
