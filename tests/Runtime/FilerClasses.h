// Persistent classes shared by the filer tests and the filer fuzz target (so no test
// framework here): a component with published values of every kind, a sub-object, an owned
// collection and defined (list and binary) properties, and two collection item classes.
#pragma once

#include <vector>

#include "Runtime/Runtime.h"

namespace kztest {
using namespace kz;

enum TShade : std::uint8_t { shLight, shDark };

class TPoint : public TPersistent {
  KZ_CLASS(TPoint, TPersistent)
 public:
  std::int32_t GetX() const { return FX; }
  void SetX(std::int32_t V) { FX = V; }
  std::int32_t FX = 0;
};

class TTag : public TCollectionItem {
  KZ_CLASS(TTag, TCollectionItem)
 public:
  explicit TTag(TCollection* C) : TCollectionItem(C) {}
  const String& GetLabel() const { return FLabel; }
  void SetLabel(const String& V) { FLabel = V; }
  String FLabel;
};

class TSizedTag : public TTag {
  KZ_CLASS(TSizedTag, TTag)
 public:
  explicit TSizedTag(TCollection* C) : TTag(C) {}
  std::int32_t GetSize() const { return FSize; }
  void SetSize(std::int32_t V) { FSize = V; }
  std::int32_t FSize = 0;
};

inline std::vector<String> GLoadedOrder;

class TGadget : public TComponent {
  KZ_CLASS(TGadget, TComponent)
 public:
  explicit TGadget(TComponent* AOwner) : TComponent(AOwner), FTags(this, &TTag::ClassInfo()) {}

  std::int32_t GetCount() const { return FCount; }
  void SetCount(std::int32_t V) {
    if (V < 0) throw EListError(Runtime::SListCountError, {V});
    FCount = V;
  }
  std::int64_t GetBig() const { return FBig; }
  void SetBig(std::int64_t V) { FBig = V; }
  double GetRatio() const { return FRatio; }
  void SetRatio(double V) { FRatio = V; }
  bool GetOn() const { return FOn; }
  void SetOn(bool V) { FOn = V; }
  const String& GetCaption() const { return FCaption; }
  void SetCaption(const String& V) { FCaption = V; }
  TShade GetShade() const { return FShade; }
  void SetShade(TShade V) { FShade = V; }
  TPoint* GetOrigin() const { return &FOrigin; }
  TOwnedCollection* GetTags() const { return &FTags; }

  void DefineProperties(TFiler* Filer) override {
    inherited::DefineProperties(Filer);
    Filer->DefineProperty(
        u"Notes",
        [this](TReader* R) {
          FNotes.clear();
          R->ReadListBegin();
          while (!R->EndOfList()) FNotes.push_back(R->ReadString());
          R->ReadListEnd();
        },
        [this](TWriter* W) {
          W->WriteListBegin();
          for (const String& S : FNotes) W->WriteString(S);
          W->WriteListEnd();
        },
        !FNotes.empty());
    Filer->DefineBinaryProperty(
        u"Blob",
        [this](TStream* S) {
          FBlob.assign(static_cast<std::size_t>(S->GetSize()), 0);
          S->ReadBuffer(FBlob.data(), static_cast<std::int32_t>(FBlob.size()));
        },
        [this](TStream* S) { S->WriteBuffer(FBlob.data(), static_cast<std::int32_t>(FBlob.size())); },
        !FBlob.empty());
    // Never written; an old stored form that has it is read and dropped.
    Filer->DefineProperty(u"Obsolete", [](TReader* R) { R->ReadInteger(); }, nullptr, false);
  }
  void Loaded() override {
    inherited::Loaded();
    GLoadedOrder.push_back(GetName());
  }

  std::int32_t FCount = 0;
  std::int64_t FBig = 0;
  double FRatio = 0;
  bool FOn = false;
  String FCaption;
  TShade FShade = shLight;
  mutable TPoint FOrigin;
  mutable TOwnedCollection FTags;
  std::vector<String> FNotes;
  TBytes FBlob;
};

inline void RegisterFilerTestClasses() {
  RegisterClass(TGadget::ClassInfo());
  RegisterClass(TTag::ClassInfo());
  RegisterClass(TSizedTag::ClassInfo());
  RegisterProperties(TPoint::ClassInfo(), {Published(u"X", &TPoint::GetX, &TPoint::SetX)});
  RegisterProperties(TTag::ClassInfo(), {Published(u"Label", &TTag::GetLabel, &TTag::SetLabel)});
  RegisterProperties(TSizedTag::ClassInfo(), {Published(u"Size", &TSizedTag::GetSize, &TSizedTag::SetSize)});
  RegisterProperties(TGadget::ClassInfo(), {Published(u"Count", &TGadget::GetCount, &TGadget::SetCount),
                                            Published(u"Big", &TGadget::GetBig, &TGadget::SetBig),
                                            Published(u"Ratio", &TGadget::GetRatio, &TGadget::SetRatio),
                                            Published(u"On", &TGadget::GetOn, &TGadget::SetOn),
                                            Published(u"Caption", &TGadget::GetCaption, &TGadget::SetCaption),
                                            Published(u"Shade", &TGadget::GetShade, &TGadget::SetShade),
                                            PublishedObject(u"Origin", &TGadget::GetOrigin),
                                            PublishedObject(u"Tags", &TGadget::GetTags)});
}

inline void Fill(TGadget& G, int Base) {
  G.FCount = Base;
  G.FBig = std::int64_t{1} << (40 + Base);
  G.FRatio = 0.1 * Base;
  G.FOn = Base % 2;
  G.FCaption = u"caption \u00e9\U0001F600 " + IntToStr(Base);
  G.FShade = shDark;
  G.FOrigin.FX = -Base;
  static_cast<TTag*>(G.FTags.Add())->FLabel = u"a" + IntToStr(Base);
  static_cast<TTag*>(G.FTags.Add())->FLabel = u"b";
  G.FNotes = {u"n1", u""};
  G.FBlob = {0, 1, 2, 255};
}

}  // namespace kztest
