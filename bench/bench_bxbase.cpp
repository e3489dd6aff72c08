// Base-types benchmarks: binary buffer streams beside a plain cursor over a
// block (an end check and a memcpy per value), a std::vector append and a
// memcpy; BxSmartPointer beside std::shared_ptr; BxVariant operations.
#include <bxbase/bxstreamreadbinarybuffer.h>
#include <bxbase/bxstreamwritebinarybuffer.h>
#include <bxbase/bxsmartpointer.h>
#include <bxbase/bxvariant.h>

#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

// libstdc++ drops the atomic operations of std::shared_ptr while a process has
// only one thread; start one so that both pointers pay for thread safety.
const bool c_multiThreaded = [] {
    std::thread([] {}).join();
    return true;
}();

constexpr int c_values = 1 << 20;  // 4 MiB of 4-byte values

// The peer of the typed stream reads and writes: what hand-written code does
// with a block of memory, a cursor with an end check and a memcpy per value.
class CCursorReader
{
public:
    CCursorReader(const std::byte* data, std::size_t size) : m_next(data), m_end(data + size) {}

    template <class T>
    void Read(T& v)
    {
        if (static_cast<std::size_t>(m_end - m_next) < sizeof(T))
            throw std::out_of_range("end of data");
        std::memcpy(&v, m_next, sizeof(T));
        m_next += sizeof(T);
    }

private:
    const std::byte* m_next;
    const std::byte* m_end;
};

class CCursorWriter
{
public:
    CCursorWriter(std::byte* data, std::size_t size) : m_next(data), m_end(data + size) {}

    template <class T>
    void Write(T v)
    {
        if (static_cast<std::size_t>(m_end - m_next) < sizeof(T))
            throw std::out_of_range("block full");
        std::memcpy(m_next, &v, sizeof(T));
        m_next += sizeof(T);
    }
    std::byte* Next() const { return m_next; }

private:
    std::byte* m_next;
    std::byte* m_end;
};

void BM_StreamWriteInt32(benchmark::State& state)
{
    BxStreamWriteBinaryBuffer out(std::size_t(c_values) * 4);
    for (auto _ : state) {
        out.Clear();
        for (int k = 0; k < c_values; ++k)
            out << k;
        benchmark::DoNotOptimize(out.GetData());
    }
    state.SetBytesProcessed(state.iterations() * c_values * 4);
}
BENCHMARK(BM_StreamWriteInt32);

void BM_CursorWriteInt32(benchmark::State& state)
{
    std::vector<std::byte> block(std::size_t(c_values) * 4);
    for (auto _ : state) {
        CCursorWriter out(block.data(), block.size());
        for (int k = 0; k < c_values; ++k)
            out.Write(k);
        benchmark::DoNotOptimize(out.Next());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * c_values * 4);
}
BENCHMARK(BM_CursorWriteInt32);

void BM_StreamWriteArrayInt32(benchmark::State& state)
{
    BxStreamWriteBinaryBuffer out(std::size_t(c_values) * 4);
    std::vector<int> values(c_values);
    for (int k = 0; k < c_values; ++k)
        values[k] = k;
    for (auto _ : state) {
        out.Clear();
        out.WriteArray(values.data(), values.size());
        benchmark::DoNotOptimize(out.GetData());
    }
    state.SetBytesProcessed(state.iterations() * c_values * 4);
}
BENCHMARK(BM_StreamWriteArrayInt32);

void BM_VectorAppendInt32(benchmark::State& state)
{
    std::vector<std::byte> out;
    out.reserve(std::size_t(c_values) * 4);
    for (auto _ : state) {
        out.clear();
        for (int k = 0; k < c_values; ++k) {
            const auto* p = reinterpret_cast<const std::byte*>(&k);
            out.insert(out.end(), p, p + 4);
        }
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed(state.iterations() * c_values * 4);
}
BENCHMARK(BM_VectorAppendInt32);

void BM_MemcpyBlock(benchmark::State& state)
{
    std::vector<int> source(c_values, 7);
    std::vector<int> target(c_values);
    for (auto _ : state) {
        std::memcpy(target.data(), source.data(), source.size() * 4);
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * c_values * 4);
}
BENCHMARK(BM_MemcpyBlock);

void BM_StreamReadInt32(benchmark::State& state)
{
    BxStreamWriteBinaryBuffer out(std::size_t(c_values) * 4);
    for (int k = 0; k < c_values; ++k)
        out << k;
    for (auto _ : state) {
        BxStreamReadBinaryBuffer in(out.GetData(), out.GetCount());
        int sum = 0;
        for (int k = 0; k < c_values; ++k) {
            int v;
            in >> v;
            sum += v;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(state.iterations() * c_values * 4);
}
BENCHMARK(BM_StreamReadInt32);

void BM_CursorReadInt32(benchmark::State& state)
{
    std::vector<std::byte> data(std::size_t(c_values) * 4);
    for (int k = 0; k < c_values; ++k)
        std::memcpy(data.data() + 4 * k, &k, 4);
    for (auto _ : state) {
        CCursorReader in(data.data(), data.size());
        int sum = 0;
        for (int k = 0; k < c_values; ++k) {
            int v;
            in.Read(v);
            sum += v;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(state.iterations() * c_values * 4);
}
BENCHMARK(BM_CursorReadInt32);

void BM_VectorReadInt32(benchmark::State& state)
{
    std::vector<std::byte> data(std::size_t(c_values) * 4);
    for (int k = 0; k < c_values; ++k)
        std::memcpy(data.data() + 4 * k, &k, 4);
    for (auto _ : state) {
        std::size_t position = 0;
        int sum = 0;
        for (int k = 0; k < c_values; ++k) {
            int v;
            if (position + 4 > data.size())
                break;
            std::memcpy(&v, data.data() + position, 4);
            position += 4;
            sum += v;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(state.iterations() * c_values * 4);
}
BENCHMARK(BM_VectorReadInt32);

struct CObject : BxReferenceCountedObject
{
    int value = 1;
};

void BM_SmartPointerCopyDestroy(benchmark::State& state)
{
    BxSmartPointer<CObject> original(new CObject);
    for (auto _ : state) {
        BxSmartPointer<CObject> copy = original;
        benchmark::DoNotOptimize(copy.get());
    }
}
BENCHMARK(BM_SmartPointerCopyDestroy);

void BM_SharedPtrCopyDestroy(benchmark::State& state)
{
    auto original = std::make_shared<int>(1);
    for (auto _ : state) {
        std::shared_ptr<int> copy = original;
        benchmark::DoNotOptimize(copy.get());
    }
}
BENCHMARK(BM_SharedPtrCopyDestroy);

void BM_VariantAssignNumber(benchmark::State& state)
{
    BxVariant v;
    int k = 0;
    for (auto _ : state) {
        v = ++k;
        benchmark::DoNotOptimize(v);
    }
}
BENCHMARK(BM_VariantAssignNumber);

void BM_VariantAssignString(benchmark::State& state)
{
    BxVariant v;
    const std::wstring text = L"a short name";
    for (auto _ : state) {
        v = text;
        benchmark::DoNotOptimize(v);
    }
}
BENCHMARK(BM_VariantAssignString);

void BM_VariantCompareMixedNumbers(benchmark::State& state)
{
    const BxVariant a = 42;
    BxVariant b = 42.5;
    for (auto _ : state) {
        benchmark::DoNotOptimize(a < b);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_VariantCompareMixedNumbers);

void BM_VariantCompareStrings(benchmark::State& state)
{
    const BxVariant a = L"alpha";
    const BxVariant b = L"alpine";
    for (auto _ : state) {
        benchmark::DoNotOptimize(a == b);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_VariantCompareStrings);

}  // namespace

BENCHMARK_MAIN();
