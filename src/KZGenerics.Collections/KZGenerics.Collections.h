// The generic collections: the open-addressing dictionary and hash tables with their string
// forms, the typed list cursor and the string list with typed data per line.
#pragma once

#include "KZGenerics.Collections/Messages.h"
#include "KZGenerics.Collections/Dictionary.h"
#include "KZGenerics.Collections/HashTable.h"
#include "KZGenerics.Collections/ListEnumerator.h"
#include "KZGenerics.Collections/DataStringList.h"

namespace kz {

// The forms the library itself uses are compiled once, into the library.
extern template class TKZDictionary<String, TObject*>;
extern template class TKZHashTable<String, TObject*>;
extern template class TKZStringHashTable<TObject*>;
extern template class TKZStringObjectHashTable<TObject>;
extern template class TKZDictionary<String, TIntfPtr<IInterface>>;
extern template class TKZHashTable<String, TIntfPtr<IInterface>>;
extern template class TKZStringHashTable<TIntfPtr<IInterface>>;

}  // namespace kz
