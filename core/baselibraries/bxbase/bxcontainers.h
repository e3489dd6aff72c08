// The framework's container names, mapped onto the standard containers.
//
//   BxList<T>        a doubly linked list (std::list)
//   BxListEx<T>      a growable array kept in order (std::vector); the original
//                    grew it in blocks, here reserve() plays that part
//   BxArray<T>       a growable array (std::vector)
//   BxMap<K, V>      a hash map (std::unordered_map); bucket count and maximum
//                    load factor are set with rehash() and max_load_factor()
//   BxMapEx<K, V>    an ordered map (std::map)
//   BxSet<T>         a hash set (std::unordered_set)
#pragma once

#include <list>
#include <map>
#include <unordered_map>
#include <unordered_set>
#include <vector>

template <class T>
using BxList = std::list<T>;
template <class T>
using BxListEx = std::vector<T>;
template <class T>
using BxArray = std::vector<T>;
template <class K, class V, class Hash = std::hash<K>>
using BxMap = std::unordered_map<K, V, Hash>;
template <class K, class V, class Less = std::less<K>>
using BxMapEx = std::map<K, V, Less>;
template <class T, class Hash = std::hash<T>>
using BxSet = std::unordered_set<T, Hash>;
