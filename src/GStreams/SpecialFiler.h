// TGSpecialFiler: writes and reads collections keeping each item's class.
#pragma once

#include "GStreams/Messages.h"
#include "Runtime/Collections.h"
#include "Runtime/Filer.h"
#include "Runtime/Object.h"

namespace kz {

/// Writes a collection so that each item reads back with its own class, not only the
/// collection's item class: before an item's properties it stores a hidden property
/// "HiddenItemClass" naming the item's class. Item classes must be registered (RegisterClass)
/// for reading. The reader and writer are not owned.
class TGSpecialFiler : public TObject {
  KZ_CLASS(TGSpecialFiler, TObject)
 public:
  TGSpecialFiler() = default;
  explicit TGSpecialFiler(TWriter* Writer) : FWriter(Writer) {}
  explicit TGSpecialFiler(TReader* Reader) : FReader(Reader) {}

  /// The collection marker; per item a list of the class-name property and the item's
  /// properties; the end of the list. Without a writer raises EStreamError
  /// "No TWriter defined for filer".
  void WriteCollection(TCollection* Value);
  /// Clears Collection (inside one update) and reads the items back, each created from
  /// its stored class name. Without a reader raises EStreamError "No TReader defined for
  /// filer"; an unregistered class raises EClassNotFound, and the items read so far stay.
  void ReadCollection(TCollection* Collection);

  TWriter* GetWriter() const { return FWriter; }
  void SetWriter(TWriter* Value) { FWriter = Value; }
  TReader* GetReader() const { return FReader; }
  void SetReader(TReader* Value) { FReader = Value; }

 private:
  TWriter* FWriter = nullptr;
  TReader* FReader = nullptr;
};

}  // namespace kz
