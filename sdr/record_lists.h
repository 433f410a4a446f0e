// The lists of records and what goes into them: the lists themselves, the record factory, and the test of
// tags.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "sdr/data_set.h"

namespace varnok::SdrUtility {

/// Replaces the lists by empty ones, one for each type. kOutOfMemory, with no lists and a last-error text,
/// without memory.
Status InitializeSdrList(PoolPtr<SdrTypeList>& lists);
void DeInitializeSdrList(PoolPtr<SdrTypeList>& lists);
Status InitializeSdrProperties();

/// 0 when the set's selected tags select the record.
Status SDRTagsCheck(const CSdr& record, const SdrDataSet& set);

/// kTypeNotSupported for a code that no type has, kOutOfMemory; `object` is null then. With `spares` the
/// object is the first of its type's list there, and no memory is asked for.
Status CreateSDRTypeObject(std::uint8_t type, PoolPtr<CSdr>& object, SdrTypeList* spares = nullptr);

/// The position of a type code in kSdrTypes; kSdrTypeCount when the code is not there.
std::size_t PositionOfType(std::uint32_t type);

/// An object of the record at the start of `raw`, which holds five bytes at least: made, given its tags,
/// decoded, and with its bytes kept. The statuses of CreateSDRTypeObject and CSdr::DecodeSDR.
Status MakeRecord(std::span<const std::uint8_t> raw, const SdrTagList& tags, PoolPtr<CSdr>& object,
                  SdrTypeList* spares = nullptr);

}  // namespace varnok::SdrUtility
