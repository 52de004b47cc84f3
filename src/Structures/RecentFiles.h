// String lists with a hard maximum count, and the most-recently-used list.
#pragma once

#include <cstdint>

#include "Runtime/StringLists.h"
#include "Runtime/Types.h"
#include "Structures/Messages.h"

namespace kz {

/// A TStringList that never holds room for more than MaxCount lines: adding to a full list
/// raises EStringListError "String List Max Count exceeded: %d".
class TMaxCountStrings : public TStringList {
  KZ_CLASS(TMaxCountStrings, TStringList)
 public:
  TMaxCountStrings() = default;

  /// NewCapacity is cut to MaxCount; raises SStringListFull when that leaves no growth.
  void SetCapacity(std::int32_t NewCapacity) override;
  std::int32_t GetMaxCount() const { return FMaxCount; }
  /// -1 lifts the limit; values below -1 are ignored. Raises the capacity to the new limit.
  void SetMaxCount(std::int32_t Value);

 private:
  std::int32_t FMaxCount = -1;
};

/// A most-recently-used list of at most MaxCount (4 in a new list) entries compared
/// case-insensitively. The newest entry is first, or last with NewestLast.
class TRecentFiles : public TMaxCountStrings {
  KZ_CLASS(TRecentFiles, TMaxCountStrings)
 public:
  TRecentFiles();

  /// Makes S the newest entry: an existing equal entry moves (keeping its text), a new one
  /// is added after the oldest is dropped from a full list. Answers the entry's index.
  std::int32_t Push(StringView S);
  /// Deletes the oldest entry, if any.
  void DeleteOldest();

  bool GetNewestLast() const { return FNewestLast; }
  void SetNewestLast(bool Value) { FNewestLast = Value; }

 private:
  bool FNewestLast = false;
};

}  // namespace kz
