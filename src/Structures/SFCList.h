// TSFCList and TSFCFreeList: string lists that tell an owner of their changes.
#pragma once

#include "Runtime/Interfaces.h"
#include "Runtime/StringLists.h"
#include "Structures/GStringList.h"

namespace kz {

/// A TStringList that tells an owner of its changes: every replacement, deletion and clear
/// before the list acts, and the changing/changed pair. BeginUpdate is silent; the
/// outermost EndUpdate tells the owner and fires OnChange once.
class TSFCList : public TStringList {
  KZ_CLASS(TSFCList, TStringList)
 public:
  TSFCList() = default;
  ~TSFCList() override;

  /// From a sorted TStringList into a sorted list: copies unsorted and sorts once at the end,
  /// all in one update. Otherwise the TStrings rules.
  void Assign(TPersistent* Source) override;
  /// One update around the add: the owner and OnChange hear of it once, at its end.
  std::int32_t AddObject(String S, TObject* AObject) override;
  void Put(std::int32_t Index, String S) override;
  void PutObject(std::int32_t Index, TObject* AObject) override;
  void Delete(std::int32_t Index) override;
  void Clear() override;
  /// As TGStringList::ForEach; virtual, so that a host list may replace the walk.
  virtual void ForEach(TForEachObjectProc Proc, TForEachFilterProc Filter, NativeInt Data);
  virtual void ForEach(const TForEachObjectMethod& Proc, const TForEachFilterMethod& Filter, NativeInt Data);

  const TIntfPtr<IStringListOwner>& GetListOwner() const { return FOwner; }
  void SetListOwner(TIntfPtr<IStringListOwner> Value) { FOwner = std::move(Value); }

 protected:
  void Changed() override;
  void Changing() override;
  void SetUpdateState(bool Updating) override;
  /// Drops the owner and the events, for destructors: nothing hears of a dying list.
  void Silence();

 private:
  TIntfPtr<IStringListOwner> FOwner;
  bool FUpdating = false;
};

/// A TSFCList that, with FreeMembers (set in a new list), owns its line objects: Delete,
/// Clear, PutObject and destruction free them.
class TSFCFreeList : public TSFCList {
  KZ_CLASS(TSFCFreeList, TSFCList)
 public:
  TSFCFreeList() = default;
  ~TSFCFreeList() override;

  /// Tells the owner, frees an owned old object, then stores the new one (if the old
  /// object's destructor removed the line, nothing is stored).
  void PutObject(std::int32_t Index, TObject* AObject) override;
  void Delete(std::int32_t Index) override;
  /// Deletes the lines one by one from the last, so that each frees its object.
  void Clear() override;

  bool GetFreeMembers() const { return FFreeMembers; }
  void SetFreeMembers(bool Value) { FFreeMembers = Value; }

 private:
  /// The object of line Index when this list must free it, else null.
  TObject* OwnedObjectAt(std::int32_t Index) const;

  bool FFreeMembers = true;
};

}  // namespace kz
