// TGStringList: lines with an object and a datum, an owner that hears of changes, and
// filtered iteration; the owner interface and ForEach callbacks the unit's string lists share.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "Runtime/Interfaces.h"
#include "Runtime/Object.h"
#include "Runtime/StringLists.h"
#include "Runtime/Types.h"

namespace kz {

/// Watches a string list (TGStringList, TSFCList) it is attached to. The list tells it of
/// the changing/changed pair around every change and, before they happen, of every
/// replacement, deletion and clear; insertions are reported only through the pair. The
/// "Before" calls come ahead of the list's own checks, so an owner may hear of an operation
/// that then raises.
class IStringListOwner : public virtual IInterface {
  KZ_INTERFACE(IStringListOwner, IInterface, "{7C1E5A92-3B4D-4F60-9E8A-D2B61C07F5A3}")
 public:
  virtual void ListChanged(TStrings* List) = 0;
  virtual void ListChanging(TStrings* List) = 0;
  /// Line Index is about to get the string S.
  virtual void BeforePut(TStrings* List, std::int32_t Index, const String& S) = 0;
  /// Line Index is about to get the object AObject.
  virtual void BeforePutObject(TStrings* List, std::int32_t Index, TObject* AObject) = 0;
  virtual void BeforeDelete(TStrings* List, std::int32_t Index) = 0;
  virtual void BeforeClear(TStrings* List) = 0;

 protected:
  ~IStringListOwner() = default;
};

/// ForEach callbacks: Sender is the list, Index/S/AObject the line, Data the caller's word.
/// The plain forms are function pointers, the method forms any callable (bound methods,
/// lambdas with captures).
using TForEachObjectProc = void (*)(TStrings* Sender, std::int32_t Index, const String& S,
                                    TObject* AObject, NativeInt Data);
using TForEachFilterProc = bool (*)(TStrings* Sender, std::int32_t Index, const String& S,
                                    TObject* AObject, NativeInt Data);
using TForEachObjectMethod = std::function<void(TStrings* Sender, std::int32_t Index,
                                                const String& S, TObject* AObject, NativeInt Data)>;
using TForEachFilterMethod = std::function<bool(TStrings* Sender, std::int32_t Index,
                                                const String& S, TObject* AObject, NativeInt Data)>;

// ---- TGStringList --------------------------------------------------------------------------

/// One line of a TGStringList. Neither pointer is owned by the line itself.
struct TGStringItem {
  String FString;
  TObject* FObject = nullptr;
  TObject* FData = nullptr;
};
using TGStringItemList = std::vector<TGStringItem>;

/// How a TGStringList compares strings.
enum TStringOpsType : std::uint8_t {
  soCaseSensitive,          // ordinal (CompareStr)
  soCaseInsensitive,        // ASCII letters folded, otherwise ordinal (CompareText)
  soCaseSensitiveLocale,    // the global locale's collation (AnsiCompareStr)
  soCaseInsensitiveLocale,  // the same after the locale's case folding (AnsiCompareText)
};

/// A string comparison: negative, zero or positive.
using TCompareTextProc = int (*)(StringView S1, StringView S2);

/// A string list whose lines carry a string, an object and a datum (a second object). The
/// comparison is chosen by StringOpsType; a sorted list keeps its lines in that order and
/// finds them by binary search (O(log n)); inserting or deleting shifts the tail (O(n)).
/// With FreeObjects / FreeData the list owns the objects / data: Delete, Clear, PutObject,
/// PutData and destruction free them (the datum before the object; a pointer that is both
/// a line's object and its datum is freed once). Otherwise nothing of the host's is owned.
/// Bad indexes raise EListError "List index out of bounds (%d)"; Insert and Put on a sorted
/// list raise EListError with SSortedListError.
class TGStringList : public TStrings {
  KZ_CLASS(TGStringList, TStrings)
 public:
  /// Empty, unsorted, dupIgnore, soCaseInsensitiveLocale, owning nothing.
  TGStringList();
  /// Releases the owner and drops the events first: nothing hears of the final Clear.
  ~TGStringList() override;

  const String& Get(std::int32_t Index) const override;
  std::int32_t GetCount() const override { return FCount; }
  TObject* GetObject(std::int32_t Index) const override;
  [[nodiscard]] virtual TObject* GetData(std::int32_t Index) const;
  /// The owner hears of it before the sorted-list and index checks.
  void Put(std::int32_t Index, String S) override;
  /// The owner hears of it before the index check; an owned replaced object is freed
  /// before the new one is stored.
  void PutObject(std::int32_t Index, TObject* AObject) override;
  /// An owned replaced datum is freed.
  virtual void PutData(std::int32_t Index, TObject* AData);
  std::int32_t GetCapacity() const override { return FCapacity; }
  /// Room for exactly NewCapacity lines; below Count raises EListError SListCapacityError.
  void SetCapacity(std::int32_t NewCapacity) override;

  /// On a sorted list the line goes where Find puts it: under dupIgnore an equal line's
  /// index is answered and nothing is added, dupError raises EListError SDuplicateString,
  /// dupAccept inserts before the first equal line. Unsorted lists append.
  std::int32_t Add(String S) override;
  std::int32_t AddObject(String S, TObject* AObject) override;
  virtual std::int32_t AddObject(String S, TObject* AObject, TObject* AData);
  /// Index in 0..Count. The line's object and datum are stored after the change is announced.
  void Insert(std::int32_t Index, String S) override;
  void InsertObject(std::int32_t Index, String S, TObject* AObject) override;
  virtual void InsertObject(std::int32_t Index, String S, TObject* AObject, TObject* AData);
  /// Adds the lines with their objects (and data, from another TGStringList) in one update.
  void AddStrings(const TStrings* Strings) override;
  /// The owner hears of it before the index check; frees the owned datum, then object.
  void Delete(std::int32_t Index) override;
  /// The owner hears of it even on an empty list; frees what the lines own, capacity 0.
  void Clear() override;
  void Exchange(std::int32_t Index1, std::int32_t Index2) override;
  /// Moves a whole line (string, object, datum); raises SSortedListError on a sorted list.
  void Move(std::int32_t CurIndex, std::int32_t NewIndex) override;
  /// Sorted lists search by Find; unsorted ones scan from line 0. -1 when absent.
  std::int32_t IndexOf(StringView S) const override;
  /// The first line whose datum is AData (identity), or -1.
  [[nodiscard]] virtual std::int32_t IndexOfData(const TObject* AData) const;
  /// Binary search: true when a line equals S; Index is then the first equal line under
  /// dupAccept, an equal line otherwise, and the insertion point when none is equal.
  virtual bool Find(StringView S, std::int32_t& Index) const;
  /// Sorts an unsorted list of two lines or more (not stable); a list flagged Sorted is left
  /// alone.
  virtual void Sort();
  /// From a TStringList: lines and objects, then its Sorted and Duplicates. From another
  /// TGStringList: lines, objects and data as they stand, then its Duplicates, Sorted and
  /// StringOpsType. Anything else: the TStrings rules.
  void Assign(TPersistent* Source) override;
  int CompareStrings(StringView S1, StringView S2) const override;

  /// Calls Proc for each line from the last to the first, so Proc may delete the line it
  /// is given; lines for which Filter (when given) answers false are skipped. A lambda
  /// without captures converts to both forms: with such a lambda for the filter too, name
  /// the form wanted (TForEachObjectMethod(...)).
  virtual void ForEach(TForEachObjectProc Proc, TForEachFilterProc Filter, NativeInt Data);
  virtual void ForEach(const TForEachObjectMethod& Proc, const TForEachFilterMethod& Filter, NativeInt Data);

  bool GetSorted() const { return FSorted; }
  /// Switching on sorts the list first; switching off keeps the order.
  void SetSorted(bool Value);
  TDuplicates GetDuplicates() const { return FDuplicates; }
  void SetDuplicates(TDuplicates Value) { FDuplicates = Value; }
  TStringOpsType GetStringOpsType() const { return FStringOpsType; }
  /// Installs the comparison; a sorted list of more than one line is sorted again.
  void SetStringOpsType(TStringOpsType Value);
  bool GetFreeObjects() const { return FFreeObjects; }
  void SetFreeObjects(bool Value) { FFreeObjects = Value; }
  bool GetFreeData() const { return FFreeData; }
  void SetFreeData(bool Value) { FFreeData = Value; }
  const TIntfPtr<IStringListOwner>& GetListOwner() const { return FOwner; }
  void SetListOwner(TIntfPtr<IStringListOwner> Value) { FOwner = std::move(Value); }
  /// Fire around every change unless an update is in progress; BeginUpdate is silent and
  /// the outermost EndUpdate reports the change once (the owner, then OnChange).
  const TNotifyEvent& GetOnChange() const { return FOnChange; }
  void SetOnChange(TNotifyEvent Handler) { FOnChange = std::move(Handler); }
  const TNotifyEvent& GetOnChanging() const { return FOnChanging; }
  void SetOnChanging(TNotifyEvent Handler) { FOnChanging = std::move(Handler); }

 protected:
  void SetUpdateState(bool Updating) override;
  /// Tells the owner, then OnChange / OnChanging; nothing while an update is in progress.
  virtual void Changed();
  virtual void Changing();
  /// Inserts S with no object or datum, without the sorted and index checks.
  virtual void InsertItem(std::int32_t Index, String S);
  virtual void QuickSort(std::int32_t L, std::int32_t R);
  /// Swaps two whole lines without checks or notifications.
  virtual void ExchangeItems(std::int32_t Index1, std::int32_t Index2);
  /// Makes room for more lines by the library's list growth step.
  virtual void Grow();

 private:
  void CheckIndex(std::int32_t Index) const;
  void Reorder();
  bool OwnsObject(const TGStringItem& Line) const;

  TIntfPtr<IStringListOwner> FOwner;
  TGStringItemList FList;
  std::int32_t FCount = 0;
  std::int32_t FCapacity = 0;
  bool FSorted = false;
  TDuplicates FDuplicates = dupIgnore;
  TNotifyEvent FOnChange;
  TNotifyEvent FOnChanging;
  TStringOpsType FStringOpsType = soCaseInsensitiveLocale;
  bool FFreeData = false;
  bool FFreeObjects = false;
  bool FAssigning = false;
  bool FUpdating = false;
  TCompareTextProc FCompareTextProc;
};

}  // namespace kz
