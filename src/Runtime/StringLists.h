// String lists: the abstract TStrings with its text, delimited and name=value views, and
// TStringList, the array-backed list of (string, object) lines with sorting and ownership.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "Runtime/Errors.h"
#include "Runtime/Persistent.h"
#include "Runtime/UpdateCounter.h"

namespace kz {

/// What a sorted string list does with a string it already holds.
enum TDuplicates : std::uint8_t { dupIgnore, dupAccept, dupError };

/// Abstract list of lines, each a string with an attached, non-owned object. Descendants supply
/// storage through Get, GetCount, InsertObject, Delete and Clear (and usually GetObject,
/// PutObject, Put and the capacity pair); every other operation is built on those.
///
/// Index errors, the sorted-list error and the duplicate error of string lists are raised as
/// EListError through Error; EStringListError is left to lists that refuse to grow.
class TStrings : public TPersistent {
  KZ_CLASS(TStrings, TPersistent)
 public:
  TStrings() = default;
  ~TStrings() override;

  // Storage, supplied by descendants.
  /// The string of line Index; the reference stays valid until the list changes.
  virtual const String& Get(std::int32_t Index) const = 0;
  virtual std::int32_t GetCount() const = 0;
  /// The object of line Index; null when the list keeps no objects.
  virtual TObject* GetObject(std::int32_t Index) const;
  /// Replaces the string of line Index, keeping its object (by default Delete + InsertObject).
  virtual void Put(std::int32_t Index, String S);
  /// Replaces the object of line Index; ignored when the list keeps no objects.
  virtual void PutObject(std::int32_t Index, TObject* AObject);
  /// The number of lines there is room for; GetCount when the list does not say.
  virtual std::int32_t GetCapacity() const;
  /// A hint to make room for NewCapacity lines; ignored by default.
  virtual void SetCapacity(std::int32_t NewCapacity);
  virtual void Clear() = 0;
  virtual void Delete(std::int32_t Index) = 0;
  virtual void InsertObject(std::int32_t Index, String S, TObject* AObject) = 0;
  virtual void Insert(std::int32_t Index, String S);

  // Lines.
  /// Appends S (a sorted list places it) and answers its index.
  virtual std::int32_t Add(String S);
  virtual std::int32_t AddObject(String S, TObject* AObject);
  /// Add without the index.
  void Append(String S);
  /// Adds every line of Strings with its object, inside one update.
  virtual void AddStrings(const TStrings* Strings);
  /// Swaps two lines with their objects (here through Put and PutObject).
  virtual void Exchange(std::int32_t Index1, std::int32_t Index2);
  /// Moves line CurIndex with its object so that it ends at NewIndex (here by Delete and
  /// InsertObject). A descendant that frees objects on those overrides both.
  virtual void Move(std::int32_t CurIndex, std::int32_t NewIndex);
  /// The first line equal to S under CompareStrings, or -1.
  virtual std::int32_t IndexOf(StringView S) const;
  /// The first line whose object is AObject (identity), or -1.
  virtual std::int32_t IndexOfObject(const TObject* AObject) const;
  /// True when Strings has the same lines, compared exactly (objects are not compared).
  bool Equals(const TStrings* Strings) const;
  /// The lines as an array.
  std::vector<String> ToStringArray() const;

  /// Copies lines, objects and the text settings (line break, delimiter, quote, separator)
  /// from another string list inside one update; other sources go to the persistent base.
  void Assign(TPersistent* Source) override;
  /// A string-list destination assigns from this list; others go to the persistent base.
  void AssignTo(TPersistent* Dest) override;

  // Updates. BeginUpdate calls SetUpdateState(true) when the count leaves 0 and EndUpdate
  // calls SetUpdateState(false) when it returns to 0; an EndUpdate without BeginUpdate does
  // nothing.
  void BeginUpdate();
  void EndUpdate();
  std::int32_t GetUpdateCount() const { return FUpdates.Count(); }
  std::int32_t UpdateCount() const { return FUpdates.Count(); }

  // Text views.
  /// Every line followed by LineBreak.
  String GetText() const;
  /// Replaces the lines by those of Value, split at CR LF, LF or CR; a final line break does
  /// not start an empty line.
  void SetText(StringView Value);
  /// The lines separated by Delimiter. A line is wrapped in QuoteChar (inner quotes doubled)
  /// when it holds the delimiter, the quote or, unless StrictDelimiter, a character up to
  /// space; a list of one empty line reads as two quotes.
  String GetDelimitedText() const;
  /// Replaces the lines by the items of Value. Quoted items may hold anything (doubled quotes
  /// read as one); unless StrictDelimiter, characters up to space also separate items and
  /// are skipped around them. A delimiter at the end adds an empty last item.
  void SetDelimitedText(StringView Value);
  /// The delimited form with ',' and '"' and blanks as separators, whatever the settings.
  String GetCommaText() const;
  void SetCommaText(StringView Value);

  // Name=value lines.
  /// The part of line Index before the first NameValueSeparator; empty when there is none.
  String GetName(std::int32_t Index) const;
  /// The part after the separator of the line named Name; empty when there is no such line.
  String GetValue(StringView Name) const;
  /// Sets the value of the line named Name, adding the line when absent; an empty Value
  /// deletes the line.
  void SetValue(StringView Name, StringView Value);
  /// The part of line Index after the first separator; empty when there is none.
  String GetValueFromIndex(std::int32_t Index) const;
  /// Sets the value of line Index keeping its name (an index of -1 adds a line); an empty
  /// Value deletes the line.
  void SetValueFromIndex(std::int32_t Index, StringView Value);
  /// The first line whose name equals Name under CompareStrings, or -1.
  virtual std::int32_t IndexOfName(StringView Name) const;

  // Settings of the text views.
  const String& GetLineBreak() const { return FLineBreak; }
  void SetLineBreak(String Value) { FLineBreak = std::move(Value); }
  Char GetDelimiter() const { return FDelimiter; }
  void SetDelimiter(Char Value) { FDelimiter = Value; }
  Char GetQuoteChar() const { return FQuoteChar; }
  void SetQuoteChar(Char Value) { FQuoteChar = Value; }
  Char GetNameValueSeparator() const { return FNameValueSeparator; }
  void SetNameValueSeparator(Char Value) { FNameValueSeparator = Value; }
  bool GetStrictDelimiter() const { return FStrictDelimiter; }
  void SetStrictDelimiter(bool Value) { FStrictDelimiter = Value; }

  /// The comparison behind IndexOf and IndexOfName: the locale's case-insensitive
  /// collation here; lists override it.
  virtual int CompareStrings(StringView S1, StringView S2) const;

 protected:
  /// Told when an update begins (true) and when the outermost one ends (false).
  virtual void SetUpdateState(bool Updating);
  /// Raises EListError with Msg formatted with Index.
  [[noreturn]] void Error(const TResourceString& Msg, std::int32_t Index) const;

 private:
  String DelimitedText(Char Delimiter, Char Quote, bool Strict) const;
  void SetDelimited(StringView Value, Char Delimiter, Char Quote, bool Strict);

  TUpdateCounter<ueIgnore> FUpdates;
  String FLineBreak = u"\r\n";
  Char FDelimiter = u',';
  Char FQuoteChar = u'"';
  Char FNameValueSeparator = u'=';
  bool FStrictDelimiter = false;
};

class TStringList;

/// Orders two lines of List by index for CustomSort: negative, zero or positive.
using TStringListSortCompare = std::function<int(TStringList* List, std::int32_t Index1, std::int32_t Index2)>;

/// Array-backed string list. Lines are (string, object); objects are not owned unless
/// OwnsObjects is set, in which case Delete, Clear, PutObject and destruction free them.
/// Get and GetObject are O(1); Find and IndexOf on a sorted list are binary searches, on an
/// unsorted one linear scans; inserting shifts the tail. A full list grows by
/// ListGrowDelta through the virtual SetCapacity, so a descendant may refuse to grow.
/// OnChanging and OnChange fire around every change, but not inside an update; BeginUpdate
/// fires OnChanging and the outermost EndUpdate fires OnChange once.
class TStringList : public TStrings {
  KZ_CLASS(TStringList, TStrings)
 public:
  TStringList() = default;
  explicit TStringList(bool OwnsObjects) : FOwnsObjects(OwnsObjects) {}
  ~TStringList() override;

  const String& Get(std::int32_t Index) const override;
  std::int32_t GetCount() const override { return static_cast<std::int32_t>(FList.size()); }
  TObject* GetObject(std::int32_t Index) const override;
  /// Raises the sorted-list error on a sorted list.
  void Put(std::int32_t Index, String S) override;
  /// With OwnsObjects the replaced object is freed (unless it is AObject itself).
  void PutObject(std::int32_t Index, TObject* AObject) override;
  std::int32_t GetCapacity() const override { return FCapacity; }
  /// Sets the room to exactly NewCapacity lines; below Count raises SListCapacityError.
  void SetCapacity(std::int32_t NewCapacity) override;
  void Clear() override;
  void Delete(std::int32_t Index) override;
  /// Raise the sorted-list error on a sorted list; Index must lie in 0..Count.
  void Insert(std::int32_t Index, String S) override;
  void InsertObject(std::int32_t Index, String S, TObject* AObject) override;
  /// On a sorted list the line goes where Find puts it; an equal line is then answered
  /// (dupIgnore), raises SDuplicateString (dupError) or is joined by the new one (dupAccept).
  std::int32_t Add(String S) override;
  std::int32_t AddObject(String S, TObject* AObject) override;
  void Exchange(std::int32_t Index1, std::int32_t Index2) override;
  void Move(std::int32_t CurIndex, std::int32_t NewIndex) override;
  std::int32_t IndexOf(StringView S) const override;

  /// Binary search of a sorted list: true when a line equals S, Index that line (the first of
  /// equal lines under dupAccept) or the insertion point. Meaningless on an unsorted list.
  virtual bool Find(StringView S, std::int32_t& Index) const;
  /// Sorts an unsorted list with CompareStrings; a list flagged Sorted is left alone.
  virtual void Sort();
  /// Sorts an unsorted list with Compare (quicksort on the middle line, not stable).
  virtual void CustomSort(const TStringListSortCompare& Compare);
  /// The locale's collation, case-sensitive or not as CaseSensitive says.
  int CompareStrings(StringView S1, StringView S2) const override;

  bool GetSorted() const { return FSorted; }
  /// Switching on sorts the list first; switching off keeps the order.
  void SetSorted(bool Value);
  TDuplicates GetDuplicates() const { return FDuplicates; }
  void SetDuplicates(TDuplicates Value) { FDuplicates = Value; }
  bool GetCaseSensitive() const { return FCaseSensitive; }
  /// A sorted list is sorted again under the new comparison.
  void SetCaseSensitive(bool Value);
  bool GetOwnsObjects() const { return FOwnsObjects; }
  void SetOwnsObjects(bool Value) { FOwnsObjects = Value; }
  const TNotifyEvent& GetOnChange() const { return FOnChange; }
  void SetOnChange(TNotifyEvent Handler) { FOnChange = std::move(Handler); }
  const TNotifyEvent& GetOnChanging() const { return FOnChanging; }
  void SetOnChanging(TNotifyEvent Handler) { FOnChanging = std::move(Handler); }

 protected:
  /// Call OnChange / OnChanging unless an update is in progress.
  virtual void Changed();
  virtual void Changing();
  /// Changing when an update begins, Changed when the outermost one ends.
  void SetUpdateState(bool Updating) override;
  /// Inserts without the sorted and index checks: Changing, grow, store, Changed.
  virtual void InsertItem(std::int32_t Index, String S, TObject* AObject);
  /// Makes room for at least one more line.
  virtual void Grow();
  /// Swaps two lines without checks or notifications (the sort's step).
  void ExchangeItems(std::int32_t Index1, std::int32_t Index2);

 private:
  struct TStringItem {
    String FString;
    TObject* FObject;
  };
  void CheckIndex(std::int32_t Index) const {
    if (Index < 0 || Index >= static_cast<std::int32_t>(FList.size())) Error(Runtime::SListIndexError, Index);
  }
  template <class TCompare>
  void SortWith(TCompare& Compare);

  std::vector<TStringItem> FList;
  std::int32_t FCapacity = 0;
  bool FSorted = false;
  TDuplicates FDuplicates = dupIgnore;
  bool FCaseSensitive = false;
  bool FOwnsObjects = false;
  TNotifyEvent FOnChange;
  TNotifyEvent FOnChanging;
};

}  // namespace kz
