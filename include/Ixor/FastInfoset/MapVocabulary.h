//
// MapVocabulary.h
//
// Library: FastInfoset
// Module:  MapVocabulary
//


#ifndef FastInfoset_MapVocabulary_INCLUDED
#define FastInfoset_MapVocabulary_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/HashedVocabulary.h"
#include "Ixor/FastInfoset/VocabularyHash.h"
#include <vector>


namespace Ixor {
namespace FastInfoset {


template <class T>
class FastInfoset_API MapVocabulary: public HashedVocabulary<T, MapVocabulary<T>>
	/// A table with an index from value to position beside the entries; no
	/// capacity limit. A value is added once.
	///
	/// The index is an open-addressing hash table that doubles when it is
	/// half full; it keeps each value's hash, so that a lookup compares
	/// values only when their hashes agree.
{
public:
	using Vocabulary<T>::NOT_FOUND;

	explicit MapVocabulary(unsigned long capacity);
		/// A table with its placeholder at index 0; capacity is ignored.

	explicit MapVocabulary(DontInitialize);
		/// A table without placeholder.

	MapVocabulary(const MapVocabulary& other);
		/// A deep copy.

	MapVocabulary& operator = (const MapVocabulary&) = delete;

	Vocabulary<T>* subtract(const Vocabulary<T>& other) const override;
	Vocabulary<T>* clone() const override;

private:
	friend class HashedVocabulary<T, MapVocabulary<T>>;

	struct Slot
	{
		UInt32   hash;
		UInt32   index;
		const T* pEntry;   // the stored entry, which never moves
	};

	template <class Matches>
	bool walk(UInt32 hash, std::size_t& slot, Matches matches) const;
	unsigned int indexAt(std::size_t slot) const;
	bool hasRoom(std::size_t maxIndex) const;
	bool makeRoom();
	void place(std::size_t slot, UInt32 hash, UInt32 index);
	void free(std::size_t slot);

	std::vector<Slot> _slots;
	std::size_t       _used;
};


template <class T>
MapVocabulary<T>::MapVocabulary(unsigned long /*capacity*/):
	_used(0)
{
	bool found;
	MapVocabulary<T>::index(T(), found);
}


template <class T>
MapVocabulary<T>::MapVocabulary(DontInitialize):
	_used(0)
{
}


template <class T>
MapVocabulary<T>::MapVocabulary(const MapVocabulary& other):
	HashedVocabulary<T, MapVocabulary<T>>(other),
	_slots(other._slots),
	_used(other._used)
{
	// The slots must refer to this table's own entries.
	for (Slot& slot: _slots)
	{
		if (slot.index != NOT_FOUND) slot.pEntry = &this->_index[slot.index];
	}
}


template <class T>
template <class Matches>
inline bool MapVocabulary<T>::walk(UInt32 hash, std::size_t& slot, Matches matches) const
	/// Walks the linear probe sequence of hash until it meets an entry that
	/// matches (true) or a free slot (false, slot is where the value
	/// belongs).
{
	if (_slots.empty()) return false;
	const std::size_t mask = _slots.size() - 1;
	for (slot = hash & mask; ; slot = (slot + 1) & mask)
	{
		const Slot& s = _slots[slot];
		if (s.index == NOT_FOUND) return false;
		if (s.hash == hash && matches(*s.pEntry)) return true;
	}
}


template <class T>
inline unsigned int MapVocabulary<T>::indexAt(std::size_t slot) const
{
	return _slots[slot].index;
}


template <class T>
inline bool MapVocabulary<T>::hasRoom(std::size_t maxIndex) const
{
	return this->_index.size() <= maxIndex;
}


template <class T>
bool MapVocabulary<T>::makeRoom()
{
	if (2 * (_used + 1) <= _slots.size()) return false;
	// The entries go into the new slots in the order they were added, as if
	// added there one by one: truncation, newest first, relies on it.
	std::vector<Slot> slots(_slots.empty() ? 64 : 2 * _slots.size(), Slot{0, NOT_FOUND, 0});
	const std::size_t mask = slots.size() - 1;
	for (std::size_t idx = 0; idx < this->_index.size(); ++idx)
	{
		const T& entry = this->_index[idx];
		const UInt32 hash = VocabularyHash<T>()(entry);
		std::size_t i = hash & mask;
		while (slots[i].index != NOT_FOUND) i = (i + 1) & mask;
		slots[i] = Slot{hash, static_cast<UInt32>(idx), &entry};
	}
	_slots.swap(slots);
	return true;
}


template <class T>
inline void MapVocabulary<T>::place(std::size_t slot, UInt32 hash, UInt32 index)
{
	_slots[slot] = Slot{hash, index, &this->_index[index]};
	++_used;
}


template <class T>
inline void MapVocabulary<T>::free(std::size_t slot)
{
	_slots[slot].index = NOT_FOUND;
	--_used;
}


template <class T>
Vocabulary<T>* MapVocabulary<T>::subtract(const Vocabulary<T>& other) const
{
	return this->fillDifference(new MapVocabulary<T>(DontInitialize()), other);
}


template <class T>
Vocabulary<T>* MapVocabulary<T>::clone() const
{
	return new MapVocabulary<T>(*this);
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_MapVocabulary_INCLUDED
