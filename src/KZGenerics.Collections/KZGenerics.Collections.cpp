#include "KZGenerics.Collections/KZGenerics.Collections.h"

namespace kz {

template class TKZDictionary<String, TObject*>;
template class TKZHashTable<String, TObject*>;
template class TKZStringHashTable<TObject*>;
template class TKZStringObjectHashTable<TObject>;
template class TKZDictionary<String, TIntfPtr<IInterface>>;
template class TKZHashTable<String, TIntfPtr<IInterface>>;
template class TKZStringHashTable<TIntfPtr<IInterface>>;

}  // namespace kz
