#include "GStreams/SpecialFiler.h"
#include "Runtime/WithinUpdate.h"

namespace kz {

using namespace Runtime;
using namespace GStreams;

namespace {
constexpr StringView GHiddenItemClass = u"HiddenItemClass";
}

void TGSpecialFiler::WriteCollection(TCollection* Value) {
  if (!FWriter) throw EStreamError(SNoWriterDefined);
  if (!Value) RaiseNullAccess(u"collection");
  FWriter->WriteValue(vaCollection);
  for (std::int32_t i = 0; i < Value->GetCount(); ++i) {
    TCollectionItem* Item = Value->GetItem(i);
    FWriter->WriteListBegin();
    FWriter->WritePropName(GHiddenItemClass);
    FWriter->WriteString(Item->ClassName());
    FWriter->WriteProperties(Item);
    FWriter->WriteListEnd();
  }
  FWriter->WriteListEnd();
}

void TGSpecialFiler::ReadCollection(TCollection* Collection) {
  if (!FReader) throw EStreamError(SNoReaderDefined);
  if (!Collection) RaiseNullAccess(u"collection");
  WithinUpdate(*Collection, [&] {
    Collection->Clear();
    FReader->ReadValue();  // the collection marker, taken on trust
    while (!FReader->EndOfList()) {
      FReader->ReadListBegin();
      FReader->ReadPropName();  // the hidden property's name, taken on trust as well
      const String ClassName = FReader->ReadString();
      const auto* Meta = dynamic_cast<TCollectionItemClass>(&FindClass(ClassName));
      if (!Meta || !Meta->CanCreate()) throw EReadError(SNotItemClass, {ClassName});
      TCollectionItem* Item = Collection->Add(Meta);
      while (!FReader->EndOfList()) FReader->ReadProperty(Item);
      FReader->ReadListEnd();
    }
    FReader->ReadListEnd();
  });
}

}  // namespace kz
