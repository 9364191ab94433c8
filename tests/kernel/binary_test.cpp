// Binary files of the sparse forms and bit vectors, where they are long or fail.
#include "kernel/records.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <unistd.h>

#include "support/Capture.h"
#include "support/FailingAllocation.h"

using namespace kernel;

namespace {

// A file that is gone at the end.
class File {
public:
  File() = default;
  explicit File(const std::string& bytes) {
    std::fwrite(bytes.data(), 1, bytes.size(), _stream);
    std::fflush(_stream);
    std::rewind(_stream);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { std::fclose(_stream); }
  FILE* rewound() {
    std::rewind(_stream);
    return _stream;
  }
  std::string bytes() {
    std::string all;
    char part[4096];
    rewound();
    for (std::size_t n; (n = std::fread(part, 1, sizeof part, _stream)) > 0;)
      all.append(part, n);
    return all;
  }

private:
  FILE* _stream = std::tmpfile();
};

// A form with all its functions, and what two records of it must share to be the same.
struct Trees {
  using Record = VECM;
  static Own<VECM> of(const VEC* v, int* status) { return own(LM_vec2vecm(v, status)); }
  static int write(FILE* f, const VECM* v, int* status) { return vecm_boutput(f, v, status); }
  static VECM* read(FILE* f, VECM* v, int* status) { return LM_vecm_binput(f, v, status); }
};
struct Packed {
  using Record = VECMP;
  static Own<VECMP> of(const VEC* v, int* status) { return own(LM_vec2vecmp(v, status)); }
  static int write(FILE* f, const VECMP* v, int* status) { return vecmp_boutput(f, v, status); }
  static VECMP* read(FILE* f, VECMP* v, int* status) { return LM_vecmp_binput(f, v, status); }
};
struct Windows {
  using Record = VECMW;
  static Own<VECMW> of(const VEC* v, int* status) { return own(LM_vec2vecmw(v, status)); }
  static int write(FILE* f, const VECMW* v, int* status) { return vecmw_boutput(f, v, status); }
  static VECMW* read(FILE* f, VECMW* v, int* status) { return LM_vecmw_binput(f, v, status); }
};
struct Lists {
  using Record = BVEC;
  static Own<BVEC> of(const VEC* v, int* status) {
    auto on = own(LM_bv_get_ivec("test", 0, static_cast<int>(v->dim), static_cast<int>(v->dim), 0,
                                 nullptr, status));
    for (int i = 0; i < on->dim; ++i)
      if (v->ve[i] != 0.0) LM_bv_insere(on.get(), i, status);
    return on;
  }
  static int write(FILE* f, const BVEC* v, int* status) { return LM_bv_boutput(f, v, status); }
  static BVEC* read(FILE* f, BVEC* v, int* status) { return LM_bv_binput(f, v, status); }
};

int status = 0;

template <class Form>
class BinaryForms : public Kernel {
protected:
  Own<typename Form::Record> record(const std::vector<double>& x) {
    return Form::of(vec(x).get(), &status);
  }
  std::string written(const typename Form::Record* v) {
    File file;
    EXPECT_EQ(Form::write(file.rewound(), v, &status), 0);
    return file.bytes();
  }
};
using Forms = testing::Types<Trees, Packed, Windows, Lists>;
TYPED_TEST_SUITE(BinaryForms, Forms, );

// Longer than what is read or staged at a time, and with gaps.
std::vector<double> longVector() {
  std::vector<double> x(40000);
  for (std::size_t i = 0; i < x.size(); ++i)
    x[i] = i % 3 == 1 ? 0.0 : static_cast<double>(i) + 1.0;
  return x;
}

TYPED_TEST(BinaryForms, LongRecordsComeBack) {
  const std::string bytes = this->written(this->record(longVector()).get());
  File file(bytes);

  const auto back = own(TypeParam::read(file.rewound(), nullptr, &status));

  ASSERT_TRUE(back);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(this->written(back.get()), bytes);
}

TYPED_TEST(BinaryForms, CutAnywhereAreError7AndLeaveTheRecord) {
  const std::string bytes = this->written(this->record({0, 2, 3, 0, 5}).get());
  const auto old = this->record({7, 0, 8});
  const std::string former = this->written(old.get());

  for (std::size_t length = 0; length < bytes.size(); ++length) {
    SCOPED_TRACE(length);
    File file(bytes.substr(0, length));
    EXPECT_FAILS(7, TypeParam::read(file.rewound(), old.get(), &status));
  }

  EXPECT_EQ(this->written(old.get()), former);
}

TYPED_TEST(BinaryForms, LongRecordsCutAtABatchAreError7) {
  const std::string bytes = this->written(this->record(longVector()).get());

  for (const std::size_t missing : {std::size_t{1}, bytes.size() / 3, bytes.size() / 2}) {
    File file(bytes.substr(0, bytes.size() - missing));
    EXPECT_FAILS(7, TypeParam::read(file.rewound(), nullptr, &status));
  }
}

TYPED_TEST(BinaryForms, WithoutMemoryReadingIsError3AndLeavesTheRecord) {
  const std::string bytes = this->written(this->record({0, 2, 3, 0, 5}).get());
  const auto old = this->record({7, 0, 8});
  const std::string former = this->written(old.get());
  File file(bytes);

  const long failures = support::forEachFailingAllocation([&] {
    FILE* const stream = file.rewound();
    auto* const read = TypeParam::read(stream, old.get(), &status);
    const support::Unharmed unharmed;
    if (read) return;
    EXPECT_EQ(status, -1);
    EXPECT_EQ(lastError(), 3);
    EXPECT_EQ(this->written(old.get()), former);
  });

  EXPECT_GE(failures, 2);
  EXPECT_EQ(this->written(old.get()), bytes) << "the reading that had memory";
}

// A stream on a pipe that takes one page more, with text in the buffer of the stream. The words of
// a record go past the buffer and arrive; the text does not.
class BlockedText {
public:
  BlockedText() {
    if (pipe2(_ends, O_NONBLOCK) != 0) std::abort();
    const std::string page(4096, 'x');
    while (::write(_ends[1], page.data(), page.size()) > 0) {
    }
    char taken[4096];
    if (::read(_ends[0], taken, sizeof taken) != sizeof taken) std::abort();
    stream = fdopen(_ends[1], "w");
    setvbuf(stream, _buffer, _IOFBF, sizeof _buffer);
    std::fputs(std::string(4090, 't').c_str(), stream);
  }
  BlockedText(const BlockedText&) = delete;
  BlockedText& operator=(const BlockedText&) = delete;
  ~BlockedText() {
    std::fclose(stream);
    close(_ends[0]);
  }

  FILE* stream;

private:
  int _ends[2];
  char _buffer[8192];
};

TYPED_TEST(BinaryForms, AFailedFlushIsReportedAsAnErrorOfTheDisk) {
  const auto v = this->record({1, 2});
  BlockedText pipe;

  const auto said =
      support::capture([&] { EXPECT_EQ(TypeParam::write(pipe.stream, v.get(), &status), -1); });

  EXPECT_EQ(status, -1);
  EXPECT_THAT(said.out + said.err, testing::HasSubstr("CHKDISK"));
  EXPECT_THAT(said.out + said.err,
              testing::HasSubstr(std::string("Write error: ") + std::strerror(EAGAIN)));
}

TYPED_TEST(BinaryForms, WordsThatDoNotArriveAreAFailure) {
  const auto v = this->record(longVector());
  FILE* const full = std::fopen("/dev/full", "wb");
  ASSERT_TRUE(full);

  EXPECT_EQ(TypeParam::write(full, v.get(), &status), -1);

  EXPECT_EQ(status, -1);
  std::fclose(full);
}

} // namespace
