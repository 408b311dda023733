/// The fields of fixed sizes that the records of a block begin with.
#ifndef WQDATA_SERVICE_FIRSTFIELDS_H_
#define WQDATA_SERVICE_FIRSTFIELDS_H_

#include <algorithm>
#include <array>
#include <cstdint>

#include <wqdata/service/fieldlayout.h>

namespace wqd::service {

/// Records of one kind begin alike. Where the bytes of the heads are those of a record that was
/// stepped through, these fields fit and stand where they stood there: that is told for all at
/// once, by a few comparisons of whole words, and without a step from one to the next.
template <const FieldFormat& format>
class FirstFields {
 public:
  /// True when a record of `count` fields at the front of `bytes` begins with the known ones. False
  /// for one that begins otherwise, or has too few bytes behind its front to tell. Of some of these
  /// records, the first of all, their own first fields become the known ones.
  bool Match(Bytes bytes, std::uint32_t count) {
    if (m_count > 0 && m_count <= count && bytes.Left() >= kMostBytes && !Differs(bytes.At())) {
      return true;
    }
    if (m_misses++ % kMissesForEachLesson == 0) Learn(bytes, count);
    return false;
  }

  /// Of the known fields: how many there are, and their bytes.
  std::uint32_t count() const { return m_count; }
  std::uint32_t size() const { return m_ends[m_count]; }

  /// The first known field with an identifier, `count()` for none; and where a field begins.
  std::uint32_t Find(FID id) const {
    return static_cast<std::uint32_t>(std::find(m_ids.begin(), m_ids.begin() + m_count, id) -
                                      m_ids.begin());
  }
  std::uint32_t OffsetOf(std::uint32_t field) const { return m_ends[field]; }

 private:
  static constexpr std::uint32_t kMostBytes = 64;  // the common record's, in few enough words
  static constexpr std::uint32_t kMostFields = kMostBytes / kFieldHead;
  static constexpr std::uint32_t kMissesForEachLesson = 16;  // learning costs as much as a walk

  bool Differs(const std::uint8_t* record) const {
    std::uint64_t differences = 0;
    for (std::uint32_t i = 0; i < kMostBytes; i += sizeof differences) {
      differences |= (load<std::uint64_t>(record + i) ^ load<std::uint64_t>(&m_heads[i])) &
                     load<std::uint64_t>(&m_mask[i]);
    }
    return differences != 0;
  }

  void Learn(Bytes bytes, std::uint32_t count) {
    m_mask.fill(0);
    for (m_count = 0; m_count < count && bytes.Left() >= kFieldHead; ++m_count) {
      const bool text = load<std::uint16_t>(bytes.At()) == TYPE_STRING;
      const std::uint64_t bytesOfField = text ? 0 : common_field_size<format>(bytes);
      if (bytesOfField == 0 || size() + bytesOfField > kMostBytes) return;
      std::copy_n(bytes.At(), kFieldHead, &m_heads[size()]);
      std::fill_n(&m_mask[size()], kFieldHead, std::uint8_t{UINT8_MAX});
      m_ids[m_count] = load<FID>(bytes.At() + sizeof(std::uint16_t));
      m_ends[m_count + 1] = static_cast<std::uint32_t>(size() + bytesOfField);
      bytes.Skip(bytesOfField);
    }
  }

  std::array<std::uint8_t, kMostBytes> m_heads{};  // where they stand in a record
  std::array<std::uint8_t, kMostBytes> m_mask{};   // all bits of the bytes of heads
  std::array<FID, kMostFields> m_ids{};
  std::array<std::uint32_t, kMostFields + 1> m_ends{};
  std::uint32_t m_count = 0;
  std::uint32_t m_misses = 0;
};

}  // namespace wqd::service

#endif  // WQDATA_SERVICE_FIRSTFIELDS_H_
