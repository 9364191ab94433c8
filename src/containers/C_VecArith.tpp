// The arithmetic of C_Vec, included by C_Vec.cpp. Operands in core go through one BLAS call, all
// others in blocks that Extract gives.

namespace {

template <class T, class I>
bool direct(C_Vec<T, I>& v) {
  return v.InCore() && v.Full();
}

template <class T, class I>
void requireSameDim(C_Vec<T, I>& a, C_Vec<T, I>& b) {
  if (a.Dim() != b.Dim()) fail(2872);
}

/** The address of the first value; throws 38 if there is none. */
template <class T, class I>
T* requireAdr(C_Vec<T, I>& v) {
  T* values = v.Adr(0);
  if (values == nullptr) fail(38);
  return values;
}

/** A block of a vector: a pointer into one in core, else read into the vector's own buffer. */
template <class T, class I>
T* blockOf(C_Vec<T, I>& v, long long first, long long length) {
  return v.Extract(static_cast<I>(first), static_cast<I>(first + length - 1),
                   v.InCore() ? nullptr : v.Adr(0));
}

/** The sum of conj(a) b, block by block, summed in T. */
template <class T, class I>
T blockwiseDot(C_Vec<T, I>& a, C_Vec<T, I>& b) {
  T sum(0);
  Zarel::forEachBlock(a.Dim(), [&](long long first, long long length) {
    T* x = blockOf(a, first, length);
    sum = Zarel::plus(sum, Zarel::Blas::dot(length, x, blockOf(b, first, length)));
  });
  return sum;
}

/** One number from every block of a vector, or from the whole of one in core. */
template <class T, class I, class Part>
double sumOfParts(C_Vec<T, I>& v, Part part) {
  if (direct(v)) return part(v.Dim(), v.Adr(0));
  double sum = 0;
  Zarel::forEachBlock(v.Dim(), [&](long long first, long long length) {
    sum += part(length, blockOf(v, first, length));
  });
  return sum;
}

template <class T, class I>
double euclideanNorm(C_Vec<T, I>& v) {
  if constexpr (std::is_integral_v<T>)
    return std::sqrt(
        sumOfParts(v, [](long long n, T* x) { return Zarel::Blas::sumOfSquares(n, x); }));
  else
    return std::sqrt(Zarel::modulus(v * v));
}

/** Shared by IMin and IMax: -1 or a last value past the end means the last one. */
template <class T, class I>
long long searchCount(C_Vec<T, I>& v, I first, I last) {
  if (first < 0) return 0;
  if (last == -1 || last >= v.Dim()) last = v.Dim() - 1;
  return static_cast<long long>(last) - first + 1;
}

} // namespace

template <class T, class I>
int C_Vec<T, I>::Copy(C_Vec& source) {
  if (&source == this) return 0;
  if ((this->Full() != 0) != (source.Full() != 0)) fail(12);
  this->Resize(source.Dim());
  if (!direct(*this) || !direct(source)) fail(38);
  requireSameDim(*this, source);
  if (this->dim_ > 0)
    std::memcpy(static_cast<void*>(requireAdr(*this)), requireAdr(source),
                Zarel::bytesOf(this->dim_, sizeof(T)));
  return 0;
}

template <class T, class I>
C_Vec<T, I>& C_Vec<T, I>::operator*=(T alpha) {
  if (!direct(*this)) fail(38);
  Zarel::Blas::scal(this->dim_, alpha, Adr(0));
  return *this;
}

template <class T, class I>
C_Vec<T, I>& C_Vec<T, I>::operator+=(C_Vec& other) {
  other.Axpy(*this, T(1));
  return *this;
}

template <class T, class I>
C_Vec<T, I>& C_Vec<T, I>::operator-=(C_Vec& other) {
  other.Axpy(*this, T(-1));
  return *this;
}

template <class T, class I>
C_Vec<T, I>& C_Vec<T, I>::operator+=(T value) {
  if (this->dim_ == 0) return *this;
  requireAdr(*this);
  if (!this->InCore()) fail(38);
  T* values = Adr(0);
  for (I i = 0; i < this->dim_; ++i)
    values[i] = Zarel::plus(values[i], value);
  return *this;
}

template <class T, class I>
bool C_Vec<T, I>::operator==(C_Vec& other) {
  if (this->dim_ != other.Dim()) return false;
  T* a = requireAdr(*this);
  T* b = requireAdr(other);
  if (!this->InCore() || !other.InCore()) fail(38);
  return std::equal(a, a + std::max<I>(this->dim_, 0), b);
}

template <class T, class I>
T C_Vec<T, I>::operator*(C_Vec& other) {
  requireSameDim(*this, other);
  const bool here = direct(*this);
  const bool there = direct(other);
  if (here && there) return Zarel::Blas::dot(this->dim_, Adr(0), other.Adr(0));
  if (here) return other * *this;
  return blockwiseDot(*this, other);
}

template <class T, class I>
int C_Vec<T, I>::Axpy(C_Vec& y, T alpha) {
  requireSameDim(*this, y);
  if (this->dim_ == 0) return 0;
  if (!this->Full() || !y.Full()) fail(2873);
  if (this->InCore() && y.InCore()) {
    Zarel::Blas::axpy(this->dim_, alpha, Adr(0), y.Adr(0));
    return 0;
  }
  Zarel::forEachBlock(this->dim_, [&](long long first, long long length) {
    T* target = blockOf(y, first, length);
    Zarel::Blas::axpy(length, alpha, blockOf(*this, first, length), target);
  });
  return 0;
}

template <class T, class I>
int C_Vec<T, I>::Had(C_Vec& x, C_Vec& y) {
  requireSameDim(x, y);
  this->Resize(x.Dim());
  if (x.Dim() == 0) return 0;
  if (!this->Full() || !x.Full() || !y.Full()) fail(2873);
  requireSameDim(*this, x);
  if (this->InCore() && x.InCore() && y.InCore()) {
    std::transform(x.Adr(0), x.Adr(0) + x.Dim(), y.Adr(0), Adr(0), Zarel::times<T>);
    return 0;
  }
  // Off core both factors come from x: the result is its square, and y is not read.
  Zarel::forEachBlock(x.Dim(), [&](long long first, long long length) {
    T* target = blockOf(*this, first, length);
    T* factor = blockOf(x, first, length);
    std::transform(factor, factor + length, factor, target, Zarel::times<T>);
  });
  return 0;
}

template <class T, class I>
int C_Vec<T, I>::Diff(C_Vec& other, double& result) {
  if (&other == this) {
    result = 0;
    return 0;
  }
  requireSameDim(*this, other);
  if (Adr(0) == nullptr || other.Adr(0) == nullptr || !direct(*this) || !direct(other)) fail(14014);
  T* a = Adr(0);
  T* b = other.Adr(0);
  Zarel::Wide<T> sum(0);
  for (I i = 0; i < this->dim_; ++i) {
    const Zarel::Wide<T> difference = Zarel::widen(a[i]) - Zarel::widen(b[i]);
    sum += difference * difference;
  }
  result = std::abs(sum);
  return 0;
}

template <class T, class I>
double C_Vec<T, I>::Nrm2() {
  return this->Nrm(E_Nrm2);
}
template <class T, class I>
double C_Vec<T, I>::NrmInf() {
  return this->Nrm(E_NrmInf);
}

template <class T, class I>
double C_Vec<T, I>::Nrm(E_NrmType kind) {
  if (this->dim_ == 0) return 0;
  requireAdr(*this);
  switch (kind) {
  case E_NrmInf:
    return Zarel::modulus(GetVal(std::max<I>(IMax(0, -1), 0)));
  case E_Nrm1:
    return sumOfParts(*this, [](long long n, T* x) { return Zarel::Blas::sumOfModuli(n, x); });
  case E_Nrm2:
    return euclideanNorm(*this);
  }
  fail(3);
}

template <class T, class I>
int C_Vec<T, I>::Normalize(E_NrmType kind, double* norm) {
  const double value = this->Nrm(kind);
  if (norm != nullptr) *norm = value;
  if (value == 0) return 0;
  return SMlt(Zarel::fromReal<T>(1 / value), 0, -1);
}

template <class T, class I>
I C_Vec<T, I>::IMin(I first, I last) {
  if (!this->InCore()) fail(38);
  const long long count = searchCount(*this, first, last);
  return static_cast<I>(Zarel::Blas::imin(count, count < 1 ? nullptr : Adr(first)));
}

template <class T, class I>
I C_Vec<T, I>::IMax(I first, I last) {
  const long long count = searchCount(*this, first, last);
  if (count < 1) return -1;
  if (!this->InCore()) fail(38);
  return static_cast<I>(Zarel::Blas::imax(count, Adr(first)));
}
