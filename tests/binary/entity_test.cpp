// Objects with a name.
#include <sstream>

#include <zarel/C_Entity.h>

#include "binary/fixture.h"
#include "support/FailingAllocation.h"

namespace binary_test {

class Entity : public BinaryFile {};

TEST_F(Entity, WithoutArgumentsHasNoNameAndWritesAnEmptyText) {
  C_Entity entity;

  EXPECT_EQ(entity.GetName(), "");
  EXPECT_STREQ(entity.Nom(), "");
  EXPECT_EQ(entity.Write(file), 0);
  EXPECT_EQ(bytes(), hex("00000000"));
}

TEST_F(Entity, HeadIsTheNameAlone) {
  C_Entity entity("wing");

  EXPECT_EQ(entity.Write(file), 0);

  EXPECT_EQ(bytes(), hex("04000000") + "wing");
}

TEST_F(Entity, LongAndShortNamesAreShownAlike) {
  for (const char* text :
       {"short", "fifteen letters", "sixteen letters!", "quite a lot longer than that"}) {
    C_Entity entity;
    entity.SetName(text);
    EXPECT_STREQ(entity.Nom(), text);
    EXPECT_EQ(entity.GetName(), text);
  }
}

TEST_F(Entity, ReadReplacesTheName) {
  hold(hex("03000000") + "new" + hex("00000000"));
  C_Entity entity("old");

  EXPECT_EQ(entity.Read(file), 0);
  EXPECT_EQ(entity.GetName(), "new");
  EXPECT_EQ(entity.Read(file), 0);
  EXPECT_EQ(entity.GetName(), "") << "an empty text is an empty name";
}

TEST_F(Entity, FailedReadKeepsTheNameAndLeavesATrace) {
  C_Entity entity("old");

  hold(hex("05000000") + "new");
  EXPECT_EQ(entity.Read(file), -1);
  EXPECT_EQ(traces, 1);
  hold("");
  EXPECT_EQ(entity.Read(file), -1);

  EXPECT_EQ(entity.GetName(), "old");
  EXPECT_EQ(traces, 2);
}

TEST_F(Entity, WriteWithoutAFileFailsInBothLayers) {
  C_Entity entity;

  EXPECT_EQ(entity.Write(nullptr), -1);

  EXPECT_EQ(traces, 2) << "the primitive's trace and the entity's";
}

TEST_F(Entity, CopiesTakeTheName) {
  const C_Entity original("name");
  C_Entity copy(original), assigned("other");

  assigned = original;
  const C_Entity& same = assigned;
  assigned = same;

  EXPECT_EQ(copy.GetName(), "name");
  EXPECT_EQ(assigned.GetName(), "name");
}

TEST_F(Entity, InfoPrintsALineAndTheName) {
  C_Entity entity("wing");
  std::ostringstream out;

  entity.Info(out);

  EXPECT_EQ(out.str(), "========================================\nC_Entity : wing\n");
  EXPECT_STREQ(entity.Type(), "C_Entity");
}

TEST_F(Entity, IsAPersistentObject) {
  C_Entity entity("wing");
  std::string text = "stays";

  EXPECT_EQ(entity.TypeCBF(), -1);
  EXPECT_STREQ(entity.Version(), "1");
  EXPECT_EQ(entity.VersionInt(), 1);
  EXPECT_EQ(entity.Info(text), 0);
  EXPECT_EQ(text, "stays");
}

TEST_F(Entity, AdaptersDriveItThroughPointers) {
  C_Entity written("wing"), read;
  C_CbfObject* object = &written;
  void* target = static_cast<C_CbfObject*>(&read);
  int result = 7;

  EXPECT_EQ(C_CbfObject::write_function(file, object), 0);
  rewind();
  EXPECT_EQ(C_CbfObject::read_function(file, &target, &result), target);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(read.GetName(), "wing");

  EXPECT_EQ(C_CbfObject::read_function(file, &target, &result), target);
  EXPECT_EQ(result, -1) << "the file has ended";
  EXPECT_EQ(C_CbfObject::write_function(nullptr, object), -1);
}

TEST_F(Entity, FailingAllocationsLeaveTheName) {
  const std::string text(100, 'n');
  hold(hex("64000000") + text);

  const long failed = support::forEachFailingAllocation([&] {
    rewind();
    C_Entity entity;
    entity.SetName("old");
    int result = -1;
    try {
      result = entity.Read(file);
    } catch (...) {
      EXPECT_STREQ(entity.Nom(), "old");
      throw;
    }
    EXPECT_STREQ(entity.Nom(), result == 0 ? text.c_str() : "old");
  });

  EXPECT_GE(failed, 2);
}

} // namespace binary_test
