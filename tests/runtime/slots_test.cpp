// The order of the virtual operations.
#include <zarel/C_Entity.h>
#include <zarel/C_MessageTool.h>
#include <zarel/C_ProgressEngine.h>

#include "support/Slots.h"

#include <gtest/gtest.h>

namespace {

using namespace Zarel;
using support::afterDestructor;
using support::consecutive;
using support::slotsOf;

using Code = E_MessageCode_t;
using Text = const std::string&;

TEST(Slots, OfAPersistentObject) {
  using C = C_CbfObject;
  const auto slots =
      slotsOf(&C::TypeCBF, &C::Version, &C::VersionInt, &C::Write, &C::Read, &C::Info);
  EXPECT_EQ(slots, consecutive(afterDestructor, slots));
}

TEST(Slots, OfAnEntityFollowThoseOfItsRoot) {
  using C = C_Entity;
  const auto last = support::slotOf(static_cast<int (C_CbfObject::*)(std::string&)>(&C::Info));
  const auto slots = slotsOf(&C::Type, static_cast<void (C::*)(std::ostream&)>(&C::Info));
  EXPECT_EQ(slots, consecutive(last + 1, slots));
}

TEST(Slots, OfAMessage) {
  using C = C_ZarelMessage;
  const auto slots = slotsOf(
      static_cast<void (C::*)(const char*, char**)>(&C::Set),
      static_cast<void (C::*)(Code, char**)>(&C::Set),
      static_cast<void (C::*)(const char*, ...)>(&C::Set), static_cast<void (C::*)(Text)>(&C::Set),
      static_cast<void (C::*)(Code, ...)>(&C::Set),
      static_cast<void (C::*)(const char*, char**)>(&C::Append),
      static_cast<void (C::*)(const char*, ...)>(&C::Append),
      static_cast<void (C::*)(Text)>(&C::Append), static_cast<void (C::*)(Code, ...)>(&C::Append),
      &C::IsActive, static_cast<int (C::*)(const char*, ...)>(&C::Print),
      static_cast<int (C::*)(Text)>(&C::Print), static_cast<int (C::*)(Code, ...)>(&C::Print),
      static_cast<int (C::*)()>(&C::Print), &C::setKey, &C::setMessageCode, &C::setMessageType,
      &C::setVerbosityLevel, &C::setDebugScope, &C::setMessageStream, &C::getKey,
      &C::getMessageCode, &C::getMessageType, &C::getVerbosityLevel, &C::getDebugScope,
      &C::getMessageStream, &C::getMessage, &C::getCallStackFlag, &C::getCallStack,
      &C::getErrorLocation);
  EXPECT_EQ(slots, consecutive(afterDestructor, slots));
}

TEST(Slots, OfAnExceptionFollowThoseOfAMessage) {
  using C = C_ZarelException;
  const auto slots =
      slotsOf(static_cast<void (C::*)(Code, ...)>(&C::setExceptionCode),
              static_cast<void (C::*)(Code, Code)>(&C::setExceptionCode), &C::setReasonCode,
              static_cast<void (C::*)(const char*, ...)>(&C::setReason),
              static_cast<void (C::*)(Code, ...)>(&C::setReason), &C::getExceptionCode,
              &C::getReasonCode, &C::getReasonMessage, &C::getExceptionMessage, &C::getErrno);
  EXPECT_EQ(slots, consecutive(support::slotOf(&C_ZarelMessage::getErrorLocation) + 1, slots));
}

TEST(Slots, OfAControllerAndOfATool) {
  using C = C_MessageStreamCtrl;
  const auto slots =
      slotsOf(&C::AppHandleMessage, &C::AppOpenProgress, &C::AppSetProgress, &C::AppCloseProgress);
  EXPECT_EQ(slots, consecutive(slots[0], slots));
  using T = C_MessageTool;
  const auto own = slotsOf(&T::BuildResourcesFilename, &T::openLogFile, &T::closeLogFile,
                           &T::BuildCallStackString);
  EXPECT_EQ(own, consecutive(slots.back() + 1, own));
}

TEST(Slots, OfAProgressEngine) {
  using C = C_ProgressEngine;
  const auto slots =
      slotsOf(&C::SetUp, static_cast<void (C::*)(int)>(&C::Update),
              static_cast<void (C::*)(int, double)>(&C::Update), &C::Finish, &C::checkAbort);
  EXPECT_EQ(slots, consecutive(afterDestructor, slots));
}

} // namespace
