//
// MapVocabulary.h
//
// Library: FastInfoset
// Module:  MapVocabulary
//


#ifndef FastInfoset_MapVocabulary_INCLUDED
#define FastInfoset_MapVocabulary_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Vocabulary.h"
#include "Ixor/FastInfoset/VocabularyHash.h"
#include <cstring>
#include <vector>


namespace Ixor {
namespace FastInfoset {


template <class T>
class FastInfoset_API MapVocabulary: public Vocabulary<T>
	/// A table with an index from value to position beside the entries; no
	/// capacity limit. A value is added once.
	///
	/// The index is an open-addressing hash table that doubles when it is
	/// half full; it keeps each value's hash, so that a lookup compares
	/// values only when their hashes agree.
{
public:
	using Vocabulary<T>::index;
	using Vocabulary<T>::NOT_FOUND;

	explicit MapVocabulary(unsigned long capacity);
		/// A table with its placeholder at index 0; capacity is ignored.

	explicit MapVocabulary(DontInitialize);
		/// A table without placeholder.

	MapVocabulary(const MapVocabulary& other);
		/// A deep copy.

	MapVocabulary& operator = (const MapVocabulary&) = delete;

	unsigned int index(const T& value, bool& found) override;
	unsigned int exists(const T& value, bool& found) const override;

	const T& value(unsigned int idx) const override;
		/// Asserts that idx is below size().

	std::size_t size() const override;
	bool empty() const override;
	Vocabulary<T>* subtract(const Vocabulary<T>& other) const override;
	Vocabulary<T>* clone() const override;

	unsigned int find(const T& value) const;
		/// The index of value, or NOT_FOUND: exists() without the virtual
		/// call, for the writer's lookups.

	unsigned int find(const char* data, std::size_t length) const;
		/// For tables of strings: the index of the string of length octets
		/// at data, or NOT_FOUND; no string is built for the lookup.

	unsigned int indexWithin(const T& value, std::size_t maxIndex, bool& found);
		/// The index of value; a new value is added only while its index
		/// would not pass maxIndex, else the result is NOT_FOUND and nothing
		/// changes.

	unsigned int indexWithin(const char* data, std::size_t length, std::size_t maxIndex, bool& found);
		/// For tables of strings: indexWithin() of the string of length octets
		/// at data, which is built only to be added.

	void truncate(std::size_t size);
		/// Forgets the entries from index size on, keeping the memory they
		/// took, so that the table is again as it was at that size.

private:
	struct Slot
	{
		UInt32   hash;
		UInt32   index;
		const T* pEntry;   // the stored entry, which never moves
	};

	UInt32 find(const T& value, UInt32 hash) const;
	std::size_t slotOf(const char* data, std::size_t length, UInt32 hash) const;
	void grow();
	unsigned int store(const T& value, std::size_t slot, UInt32 hash);

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
	Vocabulary<T>(other),
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
inline UInt32 MapVocabulary<T>::find(const T& value, UInt32 hash) const
	/// The slot that holds value, or the free slot where it belongs.
{
	const std::size_t mask = _slots.size() - 1;
	std::size_t i = hash & mask;
	for (;;)
	{
		const Slot& slot = _slots[i];
		if (slot.index == NOT_FOUND || (slot.hash == hash && *slot.pEntry == value)) return static_cast<UInt32>(i);
		i = (i + 1) & mask;
	}
}


template <class T>
inline unsigned int MapVocabulary<T>::find(const T& value) const
{
	return _slots.empty() ? NOT_FOUND : _slots[find(value, VocabularyHash<T>()(value))].index;
}


template <class T>
inline std::size_t MapVocabulary<T>::slotOf(const char* data, std::size_t length, UInt32 hash) const
	/// The slot that holds the string of length octets at data, or the free
	/// slot where it belongs.
{
	const std::size_t mask = _slots.size() - 1;
	for (std::size_t i = hash & mask; ; i = (i + 1) & mask)
	{
		const Slot& slot = _slots[i];
		if (slot.index == NOT_FOUND || (slot.hash == hash && VocabularyHash<std::string>::equal(*slot.pEntry, data, length))) return i;
	}
}


template <class T>
inline unsigned int MapVocabulary<T>::find(const char* data, std::size_t length) const
{
	if (_slots.empty()) return NOT_FOUND;
	return _slots[slotOf(data, length, VocabularyHash<std::string>::bytes(data, length))].index;
}


template <class T>
unsigned int MapVocabulary<T>::indexWithin(const char* data, std::size_t length, std::size_t maxIndex, bool& found)
{
	const UInt32 hash = VocabularyHash<std::string>::bytes(data, length);
	std::size_t i = _slots.empty() ? 0 : slotOf(data, length, hash);
	found = !_slots.empty() && _slots[i].index != NOT_FOUND;
	if (found) return _slots[i].index;
	if (this->_index.size() > maxIndex) return NOT_FOUND;
	if (2 * (_used + 1) > _slots.size())
	{
		grow();
		i = slotOf(data, length, hash);
	}
	return store(std::string(data, length), i, hash);
}


template <class T>
unsigned int MapVocabulary<T>::store(const T& value, std::size_t slot, UInt32 hash)
{
	// The entry is stored before the slot refers to it, so that a failed
	// append leaves the table as it was.
	const UInt32 idx = static_cast<UInt32>(this->_index.size());
	this->_index.push_back(value);
	Slot& stored = _slots[slot];
	stored.hash = hash;
	stored.index = idx;
	stored.pEntry = &this->_index[idx];
	++_used;
	return idx;
}


template <class T>
void MapVocabulary<T>::grow()
{
	// The entries go into the new slots in the order they were added, as if
	// added there one by one: truncate() relies on it.
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
}


template <class T>
void MapVocabulary<T>::truncate(std::size_t size)
{
	// The newest entry first: no entry added before it has a probe
	// sequence through its slot, so freeing the slot loses no other entry.
	for (std::size_t idx = this->_index.size(); idx > size; --idx)
	{
		const T& entry = this->_index[idx - 1];
		Slot& slot = _slots[find(entry, VocabularyHash<T>()(entry))];
		poco_assert(slot.index == idx - 1);
		slot.index = NOT_FOUND;
		--_used;
		this->_index.truncate(idx - 1);
	}
}


template <class T>
unsigned int MapVocabulary<T>::indexWithin(const T& value, std::size_t maxIndex, bool& found)
{
	if (2 * (_used + 1) > _slots.size()) grow();
	const UInt32 hash = VocabularyHash<T>()(value);
	const UInt32 i = find(value, hash);
	found = _slots[i].index != NOT_FOUND;
	if (found) return _slots[i].index;
	if (this->_index.size() > maxIndex) return NOT_FOUND;
	return store(value, i, hash);
}


template <class T>
unsigned int MapVocabulary<T>::index(const T& value, bool& found)
{
	return indexWithin(value, NOT_FOUND, found);
}


template <class T>
unsigned int MapVocabulary<T>::exists(const T& value, bool& found) const
{
	if (_slots.empty())
	{
		found = false;
		return NOT_FOUND;
	}
	const UInt32 i = find(value, VocabularyHash<T>()(value));
	const UInt32 idx = _slots[i].index;
	found = idx != NOT_FOUND;
	return idx;
}


template <class T>
const T& MapVocabulary<T>::value(unsigned int idx) const
{
	poco_assert(this->_index.size() > idx);
	return this->_index[idx];
}


template <class T>
std::size_t MapVocabulary<T>::size() const
{
	return this->_index.size();
}


template <class T>
bool MapVocabulary<T>::empty() const
{
	return this->_index.empty();
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
