// The fuzz targets: one function per reader of hostile input, shared by the
// libFuzzer programs (fuzz_<name>), the seed generator (fuzz_seeds) and the
// ordinary replay test (fuzz_replay_tests).
//
//   const fuzz::STarget* target = fuzz::Find("variant");
//   fuzz::Run(*target, data, size);   // returns, or throws fuzz::CFinding or anything else unexpected
//
// A target decodes its input with the library's reader. Any BxException (or
// subclass) is the reader's correct answer to bad input and counts as
// success; everything else escapes: a crash or a sanitizer report, an
// exception of another family, or a fuzz::CFinding thrown by the target's own
// checks. Where a value decodes, the target re-encodes it with the library's
// writer (encoding E1), decodes E1 again, re-encodes that (E2) and requires E1
// and E2 to be the same bytes: value equality would hide a changed kind or
// label and trip on NaN.
//
// Inputs are bounded by libFuzzer's -max_len (4,096 by default); seeds are
// kept small so that the replay test can cut each at every byte position.
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

class BxStreamWriteBinaryBuffer;

namespace fuzz {

using Bytes = std::vector<std::uint8_t>;

/// A fault found by a target's own checks (a round trip that changed bytes).
/// Deliberately not a BxException, so that it escapes.
class CFinding : public std::logic_error
{
public:
    using std::logic_error::logic_error;
};

struct STarget
{
    const char* name;
    /// Reads `size` bytes at `data`; may throw anything (see Run).
    void (*run)(const std::uint8_t* data, std::size_t size);
    /// Appends valid inputs made with the library's own writers.
    void (*seeds)(std::vector<Bytes>& out);
};

/// Every target, in a fixed order.
const std::vector<STarget>& Targets();
/// The target named `name`, or null.
const STarget* Find(std::string_view name);

/// Runs `target` on the input: returns when it succeeds or throws BxException;
/// anything else propagates.
void Run(const STarget& target, const std::uint8_t* data, std::size_t size);

/// Throws CFinding with `what` when `a` and `b` differ.
void ExpectSameBytes(const Bytes& a, const Bytes& b, const std::string& what);
/// Throws CFinding with `what` unless `condition`.
void Expect(bool condition, const std::string& what);

/// The bytes a buffer writer holds.
Bytes BytesOf(const BxStreamWriteBinaryBuffer& buffer);
/// The bytes of a text.
Bytes BytesOf(std::string_view text);

// The targets (see fuzzobjects.cpp, fuzzstreams.cpp).
void FuzzVariant(const std::uint8_t*, std::size_t);
void FuzzVariantJson(const std::uint8_t*, std::size_t);
void FuzzUniqueId(const std::uint8_t*, std::size_t);
void FuzzSemanticVersion(const std::uint8_t*, std::size_t);
void FuzzParameterSet(const std::uint8_t*, std::size_t);
void FuzzGraph(const std::uint8_t*, std::size_t);
void FuzzChunk(const std::uint8_t*, std::size_t);
void FuzzJson(const std::uint8_t*, std::size_t);
void FuzzArchive(const std::uint8_t*, std::size_t);
void FuzzZip(const std::uint8_t*, std::size_t);
void FuzzRangeCoder(const std::uint8_t*, std::size_t);
void FuzzPredictive(const std::uint8_t*, std::size_t);
void FuzzAscii(const std::uint8_t*, std::size_t);
void FuzzLzma(const std::uint8_t*, std::size_t);

void SeedsVariant(std::vector<Bytes>&);
void SeedsVariantJson(std::vector<Bytes>&);
void SeedsUniqueId(std::vector<Bytes>&);
void SeedsSemanticVersion(std::vector<Bytes>&);
void SeedsParameterSet(std::vector<Bytes>&);
void SeedsGraph(std::vector<Bytes>&);
void SeedsChunk(std::vector<Bytes>&);
void SeedsJson(std::vector<Bytes>&);
void SeedsArchive(std::vector<Bytes>&);
void SeedsZip(std::vector<Bytes>&);
void SeedsRangeCoder(std::vector<Bytes>&);
void SeedsPredictive(std::vector<Bytes>&);
void SeedsAscii(std::vector<Bytes>&);
void SeedsLzma(std::vector<Bytes>&);

}  // namespace fuzz
