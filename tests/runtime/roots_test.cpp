// Roots, singletons and counters.
#include <type_traits>

#include <gtest/gtest.h>
#include <zarel/C_CbfObject.h>
#include <zarel/C_Counter.h>
#include <zarel/C_ProgressEngine.h>
#include <zarel/C_Singleton.h>
#include <zarel/C_Type.h>
#include <zarel/C_ZarelBase.h>

namespace {

TEST(Type, HasTheNumbersOfTheScalars) {
  EXPECT_EQ(C_Type::E_TypeDouble, 1);
  EXPECT_EQ(C_Type::E_TypeFloat, 2);
  EXPECT_EQ(C_Type::E_TypeFloatComplex, 3);
  EXPECT_EQ(C_Type::E_TypeDoubleComplex, 4);
  EXPECT_EQ(C_Type::E_TypeInteger, 5);
  EXPECT_EQ(C_Type::E_TypeHyper, 6);
  EXPECT_EQ(C_Type::E_TypeShort, 8);
  EXPECT_EQ(C_Type::E_TypeUnknown, 9);
}

TEST(Roots, HaveAVirtualTableAndNoData) {
  EXPECT_TRUE(std::has_virtual_destructor_v<C_Type>);
  EXPECT_TRUE(std::has_virtual_destructor_v<C_CbfObject>);
  EXPECT_TRUE(std::has_virtual_destructor_v<Zarel::C_ZarelBase>);
  EXPECT_EQ(sizeof(C_Type), sizeof(void*));
  EXPECT_EQ(sizeof(C_CbfObject), sizeof(void*));
  EXPECT_EQ(sizeof(Zarel::C_ZarelBase), sizeof(void*));
}

class Manager : public C_Singleton<Manager> {
public:
  static inline int alive = 0;

private:
  friend class C_Singleton<Manager>;
  Manager() { ++alive; }
  ~Manager() override { --alive; }
};

TEST(Singleton, LivesFromTheFirstUseToKill) {
  Manager::Kill();
  EXPECT_EQ(Manager::Instance(), nullptr);
  EXPECT_FALSE(Manager::IsInstanced()) << "Instance does not create";

  Manager* first = Manager::getInstance();
  EXPECT_NE(first, nullptr);
  EXPECT_EQ(Manager::getInstance(), first);
  EXPECT_EQ(Manager::Instance(), first);
  EXPECT_TRUE(Manager::IsInstanced());
  EXPECT_EQ(Manager::alive, 1);

  Manager::Kill();
  EXPECT_FALSE(Manager::IsInstanced());
  EXPECT_EQ(Manager::Instance(), nullptr);
  EXPECT_EQ(Manager::alive, 0);
  Manager::Kill();

  EXPECT_NE(Manager::getInstance(), nullptr) << "a fresh one";
  Manager::Kill();
}

class Homeless : public C_Singleton<Homeless> {
public:
  static void* operator new(size_t) noexcept { return nullptr; }
  static void operator delete(void*) {}

private:
  friend class C_Singleton<Homeless>;
  Homeless() = default;
  ~Homeless() override = default;
};

TEST(Singleton, NullFromNewIsStoredAndReturned) {
  EXPECT_EQ(Homeless::getInstance(), nullptr);
  EXPECT_FALSE(Homeless::IsInstanced());
}

struct Counted : C_Counter<Counted> {};

TEST(Counter, CountsConstructionAndDestructionButNoCopies) {
  Counted::objects_created = Counted::objects_alive = 0;
  {
    Counted one;
    EXPECT_EQ(Counted::objects_created, 1);
    EXPECT_EQ(Counted::objects_alive, 1);
    {
      Counted copy(one);
      EXPECT_EQ(Counted::objects_created, 1);
      EXPECT_EQ(Counted::objects_alive, 1);
      copy = one;
      EXPECT_EQ(Counted::objects_alive, 1);
    }
    EXPECT_EQ(Counted::objects_alive, 0) << "the copy is uncounted all the same";
  }
  EXPECT_EQ(Counted::objects_created, 1);
  EXPECT_EQ(Counted::objects_alive, -1);
}

TEST(ProgressEngine, StoresWhatItIsSetUpWithAndListensToNothing) {
  char text[] = "ignored";
  Zarel::C_ProgressEngine engine(5);

  engine.SetUp(text, 12.5, Zarel::C_ProgressEngine::E_ProgressType(3));
  engine.Update(1);
  engine.Update(2, 0.5);
  engine.checkAbort();
  engine.Finish();

  EXPECT_EQ(engine.GetId(), 5);
  EXPECT_EQ(engine.GetEnd(), 12.5);
  EXPECT_EQ(engine.GetType(), 3);
}

} // namespace
