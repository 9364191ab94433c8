// Hash tables with text keys.
#include <climits>
#include <cstddef>
#include <map>
#include <memory>

#include <zarel/hash_util.h>

#include "collections/fixture.h"

namespace collections_test {

struct DestroyTable {
  void operator()(HashTable* table) const { hashDestroy(table); }
};
using Table = std::unique_ptr<HashTable, DestroyTable>;

Table tableOf(int size) {
  HashTable* table = nullptr;
  EXPECT_EQ(hashCreate(size, &table), 0);
  return Table(table);
}

// What a function that prints leaves in its file.
template <class Print>
std::string printed(Print print) {
  return capture([&] { print(stdout); }).out;
}

std::string address(const void* p) {
  char digits[32];
  std::snprintf(digits, sizeof digits, "%p", p);
  return digits;
}

class Hash : public Collections {
protected:
  int numbers[8] = {};
};

TEST_F(Hash, SizeIsTheFirstPrimeFromTheOneGiven) {
  const std::map<int, int> sizes = {{0, 1},   {1, 1},   {2, 3},   {3, 3},     {4, 5},      {5, 5},
                                    {8, 11},  {9, 11},  {10, 11}, {24, 29},   {25, 29},    {49, 53},
                                    {90, 97}, {91, 97}, {97, 97}, {121, 127}, {1000, 1009}};
  for (const auto& [size, prime] : sizes)
    EXPECT_EQ(tableOf(size)->size, prime) << size;
}

TEST_F(Hash, NewTableIsEmpty) {
  const Table table = tableOf(10);

  EXPECT_EQ(table->debug, 0);
  EXPECT_EQ(table->nonEmpty, 0);
  EXPECT_EQ(table->longest, 0);
  for (int k = 0; k < 11; ++k)
    EXPECT_EQ(table->buckets[k], nullptr);
}

TEST_F(Hash, NegativeSizeIsNoTable) {
  HashTable none{};
  for (const int size : {-1, -2, INT_MIN}) {
    HashTable* table = &none;
    EXPECT_EQ(hashCreate(size, &table), -1) << size;
    EXPECT_EQ(table, nullptr);
  }
  EXPECT_EQ(errors(), Texts(3, "Not enough memory for a hash table"));
  EXPECT_EQ(hashCreate(1, nullptr), -1);
  EXPECT_EQ(errors(), Texts{"There is no hash table"});
}

// Hosts in C read the fields.
TEST_F(Hash, FieldsStandInTheirOrder) {
  EXPECT_EQ(offsetof(HashTable, debug), 0u);
  EXPECT_EQ(offsetof(HashTable, size), 4u);
  EXPECT_EQ(offsetof(HashTable, nonEmpty), 8u);
  EXPECT_EQ(offsetof(HashTable, longest), 12u);
  EXPECT_EQ(offsetof(HashTable, buckets), 16u);
  EXPECT_EQ(offsetof(HashNode, key), 0u);
  EXPECT_EQ(offsetof(HashNode, value), sizeof(void*));
  EXPECT_EQ(offsetof(HashNode, next), 2 * sizeof(void*));
}

TEST_F(Hash, TableIsOneBlock) {
  const auto before = zarel_sum_memsize();
  const Table table = tableOf(10);
  const void* const end = table->buckets + 11;

  EXPECT_EQ(static_cast<void*>(table->buckets), table.get() + 1);
  EXPECT_EQ(zarel_sum_memsize() - before,
            16u + static_cast<size_t>(static_cast<const char*>(end) -
                                      reinterpret_cast<const char*>(table.get())));
}

TEST_F(Hash, FoundIsMinusOneAndNotFoundZero) {
  const Table table = tableOf(10);
  void* value = numbers;

  EXPECT_EQ(hashSearch(table.get(), "a", &value), 0);
  EXPECT_EQ(value, nullptr) << "the place is zeroed";
  EXPECT_EQ(hashAdd(table.get(), "a", &numbers[1]), 0);
  EXPECT_EQ(hashSearch(table.get(), "a", &value), -1);
  EXPECT_EQ(value, &numbers[1]);
  EXPECT_EQ(hashSearch(table.get(), "a", nullptr), -1) << "no place is needed";
  EXPECT_EQ(hashSearch(table.get(), nullptr, &value), 0);
}

TEST_F(Hash, EqualKeyGetsTheNewValueAndNoSecondNode) {
  const Table table = tableOf(10);
  hashAdd(table.get(), "key", &numbers[1]);

  EXPECT_EQ(hashAdd(table.get(), "key", &numbers[2]), 0);

  void* value = nullptr;
  hashSearch(table.get(), "key", &value);
  EXPECT_EQ(value, &numbers[2]);
  EXPECT_EQ(table->longest, 1);
}

TEST_F(Hash, KeysAreCopies) {
  const Table table = tableOf(3);
  char key[] = "one";
  hashAdd(table.get(), key, numbers);

  key[0] = 'x';

  EXPECT_EQ(hashSearch(table.get(), "one", nullptr), -1);
  EXPECT_EQ(hashSearch(table.get(), "xne", nullptr), 0);
}

TEST_F(Hash, ChainsAreSorted) {
  const Table table = tableOf(1);
  for (const char* key : {"m", "z", "a", "mm", "", "n"})
    hashAdd(table.get(), key, numbers);

  Texts keys;
  for (const HashNode* node = table->buckets[0]; node; node = node->next)
    keys.emplace_back(node->key);
  EXPECT_EQ(keys, (Texts{"", "a", "m", "mm", "n", "z"}));
  EXPECT_EQ(table->nonEmpty, 1);
  EXPECT_EQ(table->longest, 6);
}

// By hand, modulo 11: "a" is 97; "abcd" 0x61626364; "abcde" adds 0x65; the sum for five bytes 0xff
// runs over 32 bits to 254. Bytes count from 0 to 255.
TEST_F(Hash, BucketIsTheSumOfGroupsOfFourBytes) {
  const std::map<std::string, int> buckets = {
      {"", 0}, {"a", 9}, {"abcd", 4}, {"abcde", 6}, {"\xff\xff\xff\xff\xff", 1}};
  for (const auto& [key, bucket] : buckets) {
    const Table table = tableOf(11);
    hashAdd(table.get(), key.c_str(), numbers);
    EXPECT_NE(table->buckets[bucket], nullptr) << key;
  }
}

TEST_F(Hash, WithoutBucketsEveryKeyBelongsToBucketZero) {
  HashNode* bucket = nullptr;
  HashTable table{0, 0, 0, 0, &bucket};
  void* value = numbers;

  EXPECT_EQ(hashSearch(&table, "key", &value), 0);
  EXPECT_EQ(value, nullptr);
  EXPECT_EQ(hashAdd(&table, "key", numbers), 0);
  EXPECT_EQ(hashAdd(&table, "a", numbers), 0);
  ASSERT_NE(bucket, nullptr);
  EXPECT_STREQ(bucket->key, "a");
  EXPECT_EQ(hashSearch(&table, "key", &value), -1);
  EXPECT_EQ(value, numbers);
  EXPECT_EQ(hashDelete(&table, "key"), 0);
  EXPECT_EQ(hashDelete(&table, "a"), 0);
  EXPECT_EQ(bucket, nullptr);
}

TEST_F(Hash, DeletedKeyIsGoneAndTheCountersStay) {
  const Table table = tableOf(1);
  for (const char* key : {"a", "b", "c"})
    hashAdd(table.get(), key, numbers);

  EXPECT_EQ(hashDelete(table.get(), "b"), 0);
  EXPECT_EQ(hashSearch(table.get(), "b", nullptr), 0);
  EXPECT_EQ(hashSearch(table.get(), "a", nullptr), -1);
  EXPECT_EQ(hashSearch(table.get(), "c", nullptr), -1);
  EXPECT_EQ(hashDelete(table.get(), "a"), 0);
  EXPECT_EQ(hashDelete(table.get(), "c"), 0);

  EXPECT_EQ(table->buckets[0], nullptr);
  EXPECT_EQ(table->nonEmpty, 1);
  EXPECT_EQ(table->longest, 3);
}

TEST_F(Hash, DeletingAnAbsentKeyFailsAndChangesNothing) {
  const Table table = tableOf(1);
  hashAdd(table.get(), "b", numbers);

  for (const char* key : {"a", "c"})
    EXPECT_EQ(hashDelete(table.get(), key), -1) << key;
  EXPECT_EQ(hashDelete(table.get(), nullptr), -1);

  EXPECT_EQ(hashSearch(table.get(), "b", nullptr), -1);
  EXPECT_EQ(errors(),
            (Texts{"The key is not in the hash table: a", "The key is not in the hash table: c",
                   "The key is not in the hash table"}));
}

TEST_F(Hash, NullTableIsReported) {
  void* value = numbers;

  EXPECT_EQ(hashSearch(nullptr, "a", &value), -1) << "the same result as for a key that is there";
  EXPECT_EQ(value, nullptr);
  EXPECT_EQ(hashDelete(nullptr, "a"), -1);
  EXPECT_EQ(hashAdd(nullptr, "a", numbers), -1);
  EXPECT_EQ(errors(), Texts(3, "There is no hash table"));
  const Table table = tableOf(1);
  EXPECT_EQ(hashAdd(table.get(), nullptr, numbers), -1);
  EXPECT_EQ(errors(), Texts{"The key is not in the hash table"});
  EXPECT_EQ(hashDestroy(nullptr), 0);
  EXPECT_EQ(errors(), Texts());
}

TEST_F(Hash, DebugFlagTellsOfSearches) {
  const Table table = tableOf(3);
  hashAdd(table.get(), "in", numbers);
  table->debug = 1;

  const std::string told = capture([&] {
                             hashSearch(table.get(), "in", nullptr);
                             hashSearch(table.get(), "out", nullptr);
                           }).out;

  const std::string in = address(table.get());
  EXPECT_EQ(told, "(hashSearch) \"in\":" + address(numbers) + " found in table " + in +
                      ".\n(hashSearch) Key \"out\" not found in table " + in + ".\n");
}

// Lengths of three buckets: 3 for "a" 97, "d" 100, "g" 103; 1 for "b" 98; 0. Their mean is 4/3,
// their variance 14/9.
TEST_F(Hash, StatisticsCountChains) {
  const Table table = tableOf(3);
  for (const char* key : {"a", "d", "g", "b"})
    hashAdd(table.get(), key, numbers);

  EXPECT_EQ(printed([&](FILE* file) { EXPECT_EQ(hashStatistics(file, table.get()), 0); }),
            "There are 1 empty buckets, 2 non-empty buckets,\n"
            "and 3 items in the longest chain.\n\n"
            "Buckets of length 1: 1\n"
            "Buckets of length 2: 0\n"
            "Buckets of length 3: 1\n"
            "\nMean bucket length = 1.33333\n"
            "\nStandard deviation = 1.24722\n");
}

TEST_F(Hash, StatisticsRememberWhatTheTableHasSeen) {
  const Table table = tableOf(1);
  for (const char* key : {"a", "b"})
    hashAdd(table.get(), key, numbers);
  for (const char* key : {"a", "b"})
    hashDelete(table.get(), key);

  EXPECT_EQ(printed([&](FILE* file) { hashStatistics(file, table.get()); }),
            "There are 0 empty buckets, 1 non-empty buckets,\n"
            "and 2 items in the longest chain.\n\n"
            "Buckets of length 1: 0\n"
            "Buckets of length 2: 0\n"
            "\nMean bucket length = 0\n"
            "\nStandard deviation = 0\n");
}

TEST_F(Hash, StatisticsOfNothing) {
  EXPECT_EQ(printed([&](FILE* file) { EXPECT_EQ(hashStatistics(file, nullptr), 0); }),
            "-- Null Hash Table --\n");
  const Table table = tableOf(3);
  EXPECT_EQ(printed([&](FILE* file) { hashStatistics(file, table.get()); }),
            "There are 3 empty buckets, 0 non-empty buckets,\n"
            "and 0 items in the longest chain.\n\n"
            "\nMean bucket length = 0\n"
            "\nStandard deviation = 0\n");
  EXPECT_EQ(hashStatistics(nullptr, table.get()), -1);
  EXPECT_EQ(errors(), Texts{"An argument is missing"});
}

TEST_F(Hash, StatisticsOfNoBucketsAreZero) {
  const HashTable table{0, 0, 0, 0, nullptr};
  EXPECT_EQ(printed([&](FILE* file) { EXPECT_EQ(hashStatistics(file, &table), 0); }),
            "There are 0 empty buckets, 0 non-empty buckets,\n"
            "and 0 items in the longest chain.\n\n"
            "\nMean bucket length = 0\n"
            "\nStandard deviation = 0\n");
}

TEST_F(Hash, StreamsThatTakeNothingAreReported) {
  const FullStream full;
  const Table table = tableOf(3);
  hashAdd(table.get(), "a", numbers);

  EXPECT_EQ(hashStatistics(full.get(), table.get()), -1);
  EXPECT_EQ(hashStatistics(full.get(), nullptr), -1);
  EXPECT_EQ(errors(), Texts(2, "Write error"));
  EXPECT_EQ(hashDump(full.get(), "Title\n", table.get()), -1);
  EXPECT_EQ(errors(), Texts{"Write error"});
}

// The statistics still pass; a node does not.
TEST_F(Hash, ADumpThatIsCutIsReported) {
  const Table table = tableOf(3);
  hashAdd(table.get(), "a", numbers);
  const std::string statistics = printed([&](FILE* file) { hashStatistics(file, table.get()); });
  std::vector<char> room(statistics.size() + 8);
  FILE* const file = fmemopen(room.data(), room.size(), "w");
  std::setvbuf(file, nullptr, _IONBF, 0);

  EXPECT_EQ(hashDump(file, nullptr, table.get()), -1);
  std::fclose(file);
  EXPECT_EQ(blamed(), Texts{"hashDump"});
}

TEST_F(Hash, DumpHasTitleStatisticsAndNodes) {
  const Table table = tableOf(3);
  hashAdd(table.get(), "d", &numbers[1]);
  hashAdd(table.get(), "a", &numbers[0]);
  const std::string statistics = printed([&](FILE* file) { hashStatistics(file, table.get()); });

  EXPECT_EQ(printed([&](FILE* file) { EXPECT_EQ(hashDump(file, "Title\n", table.get()), 0); }),
            "Title\n" + statistics + "\nBucket 1:\n    Value: " + address(&numbers[0]) +
                "    Key: \"a\"\n    Value: " + address(&numbers[1]) + "    Key: \"d\"\n");
  EXPECT_EQ(printed([&](FILE* file) { hashDump(file, nullptr, nullptr); }),
            "-- Null Hash Table --\n\n");
  errors();
  EXPECT_EQ(hashDump(nullptr, nullptr, table.get()), -1);
  EXPECT_EQ(errors(), Texts{"An argument is missing"});
}

// Random keys against a map.
TEST_F(Hash, HoldsWhatAMapHolds) {
  const Table table = tableOf(50);
  std::map<std::string, void*> reference;
  unsigned state = 1;
  for (int k = 0; k < 5000; ++k) {
    state = state * 1664525u + 1013904223u;
    const std::string key = std::to_string(state >> 24);
    if (state >> 8 & 1) {
      hashAdd(table.get(), key.c_str(), &numbers[k % 8]);
      reference[key] = &numbers[k % 8];
    } else {
      EXPECT_EQ(hashDelete(table.get(), key.c_str()), reference.erase(key) ? 0 : -1);
    }
  }
  for (int k = 0; k < 256; ++k) {
    const std::string key = std::to_string(k);
    void* value = nullptr;
    const auto entry = reference.find(key);
    ASSERT_EQ(hashSearch(table.get(), key.c_str(), &value), entry == reference.end() ? 0 : -1);
    EXPECT_EQ(value, entry == reference.end() ? nullptr : entry->second);
  }
}

TEST_F(Hash, WithoutMemoryTheTableStays) {
  const long failures = failuresWithoutLoss([&] {
    HashTable* out = nullptr;
    const int created = hashCreate(3, &out);
    const Table table(out);
    EXPECT_EQ(created, table ? 0 : -1);
    if (!table) return;
    const int added = hashAdd(table.get(), "a", numbers);
    EXPECT_EQ(hashSearch(table.get(), "a", nullptr), added == 0 ? -1 : 0);
    EXPECT_EQ(table->nonEmpty, added == 0 ? 1 : 0);
    EXPECT_EQ(table->longest, added == 0 ? 1 : 0);
  });

  EXPECT_EQ(failures, 3) << "table, key, node";
}

TEST_F(Hash, WithoutMemoryTheFunctionCalledIsBlamed) {
  const Table table = tableOf(3);
  HashTable* out = nullptr;
  const auto withoutMemory = [](long n, auto call) {
    const support::FailingAllocation failing(n);
    EXPECT_EQ(call(), -1);
  };
  const auto fail = [&] {
    withoutMemory(1, [&] { return hashCreate(3, &out); });
    withoutMemory(1, [&] { return hashAdd(table.get(), "a", numbers); });
    withoutMemory(2, [&] { return hashAdd(table.get(), "a", numbers); });
    withoutMemory(1, [&] { return hashStatistics(stdout, table.get()); });
  };

  fail();
  EXPECT_EQ(errors(), Texts(4, "Not enough memory for a hash table"));
  fail();
  EXPECT_EQ(blamed(), (Texts{"hashCreate", "hashAdd", "hashAdd", "hashStatistics"}));
}

TEST_F(Hash, DestroyingFreesTableNodesAndKeys) {
  const auto before = zarel_sum_memsize();
  HashTable* table = nullptr;
  hashCreate(3, &table);
  for (const char* key : {"a", "b", "c", "d", "a"})
    hashAdd(table, key, numbers);
  hashDelete(table, "d");

  EXPECT_EQ(hashDestroy(table), 0);

  EXPECT_EQ(zarel_sum_memsize(), before);
}

} // namespace collections_test
