/// Lanes of the plain kernels: arrays, in whose loops compilers find vector code. Private to the file that
/// includes it.
#pragma once

namespace trnmpa {
namespace {

template <typename Value, int kLanes>
struct ArrayLanes {
    static constexpr int kCount = kLanes;
    Value v[kLanes];

    ArrayLanes() = default;
    explicit ArrayLanes(Value value) {
        for (Value& lane : v)
            lane = value;
    }

    ArrayLanes operator+(const ArrayLanes& b) const {
        return With(b, [](Value x, Value y) { return x + y; });
    }
    ArrayLanes operator-(const ArrayLanes& b) const {
        return With(b, [](Value x, Value y) { return x - y; });
    }
    ArrayLanes operator*(const ArrayLanes& b) const {
        return With(b, [](Value x, Value y) { return x * y; });
    }

    static ArrayLanes LoadFloats(const float* p) {
        ArrayLanes result = {};
        for (int i = 0; i < kLanes; ++i)
            result.v[i] = static_cast<Value>(p[i]);
        return result;
    }
    void StoreFloats(float* p) const {
        for (int i = 0; i < kLanes; ++i)
            p[i] = static_cast<float>(v[i]);
    }

    /// x[i] takes element i of each row of 18.
    static void LoadLines(const float* lines, ArrayLanes* x) {
        for (int i = 0; i < 18; ++i)
            for (int k = 0; k < kLanes; ++k)
                x[i].v[k] = static_cast<Value>(lines[18 * k + i]);
    }

    void Store(float* p) const { StoreFloats(p); }

    /// The value with lanes 1, 3, ... negated.
    ArrayLanes WithOddNegated() const {
        ArrayLanes result = *this;
        for (int i = 1; i < kLanes; i += 2)
            result.v[i] = -v[i];
        return result;
    }

    /// x[i] takes element i of as many rows as there are lanes, which begin `stride` elements apart.
    static void LoadTransposed(const float* rows, int stride, ArrayLanes* x) {
        for (int i = 0; i < kLanes; ++i)
            for (int k = 0; k < kLanes; ++k)
                x[i].v[k] = rows[k * stride + i];
    }

    /// Lane i of x[0], x[1], ... goes to the row rows[i], from `offset` on.
    static void StoreTransposed(const ArrayLanes* x, float* const* rows, int offset) {
        for (int i = 0; i < kLanes; ++i)
            for (int k = 0; k < kLanes; ++k)
                rows[i][offset + k] = x[k].v[i];
    }

private:
    template <typename Operation>
    ArrayLanes With(const ArrayLanes& b, Operation operation) const {
        ArrayLanes result = {};
        for (int i = 0; i < kLanes; ++i)
            result.v[i] = operation(v[i], b.v[i]);
        return result;
    }
};

} // namespace
} // namespace trnmpa
