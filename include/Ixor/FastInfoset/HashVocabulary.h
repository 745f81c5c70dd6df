//
// HashVocabulary.h
//
// Library: FastInfoset
// Module:  HashVocabulary
//


#ifndef FastInfoset_HashVocabulary_INCLUDED
#define FastInfoset_HashVocabulary_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Vocabulary.h"
#include "Ixor/FastInfoset/VocabularyHash.h"
#include <cstring>
#include <vector>


namespace Ixor {
namespace FastInfoset {


template <class T>
class FastInfoset_API HashVocabulary: public Vocabulary<T>
	/// A table with an open-addressing hash index of fixed capacity beside
	/// the entries. It never grows: it holds at most capacity distinct
	/// values, the placeholder included.
	///
	/// The index has a quarter more slots than the capacity, so that a full
	/// table still finds a value, or its absence, in a few probes.
{
public:
	using Vocabulary<T>::index;
	using Vocabulary<T>::NOT_FOUND;

	explicit HashVocabulary(unsigned long capacity);
		/// A table that takes capacity values (at least 1), with its
		/// placeholder at index 0.

	explicit HashVocabulary(DontInitialize);
		/// A table without placeholder and without slots: it can hold
		/// nothing, and index() of any value throws "Vocabulary hash table
		/// full". subtract() builds its results with slots.

	unsigned int index(const T& value, bool& found) override;
		/// Throws Ixor::PoolOverflowException "Vocabulary hash table full"
		/// for a new value when the table is full; the table is then
		/// unchanged.

	unsigned int exists(const T& value, bool& found) const override;

	const T& value(unsigned int idx) const override;
		/// Asserts that idx is below size().

	std::size_t size() const override;
	bool empty() const override;

	Vocabulary<T>* subtract(const Vocabulary<T>& other) const override;
		/// The result has the capacity of this table.

	Vocabulary<T>* clone() const override;

	unsigned int find(const T& value) const;
		/// The index of value, or NOT_FOUND: exists() without the virtual
		/// call, for the writer's lookups.

	unsigned int find(const char* data, std::size_t length) const;
		/// For tables of strings: the index of the string of length octets
		/// at data, or NOT_FOUND; no string is built for the lookup.

	unsigned int indexWithin(const T& value, std::size_t maxIndex, bool& found);
		/// The index of value; a new value is added only while the table has
		/// room and its index would not pass maxIndex, else the result is
		/// NOT_FOUND and nothing changes. Never throws for a full table.

	unsigned int indexWithin(const char* data, std::size_t length, std::size_t maxIndex, bool& found);
		/// For tables of strings: indexWithin() of the string of length octets
		/// at data, which is built only to be added.

	void truncate(std::size_t size);
		/// Forgets the entries from index size on, keeping the memory they
		/// took, so that the table is again as it was at that size.

private:
	HashVocabulary(DontInitialize, unsigned long capacity);

	static unsigned long checkCapacity(unsigned long capacity);
	static std::size_t slotsFor(unsigned long capacity);
	bool probe(const T& value, UInt32& slot, UInt32& hash) const;
	bool probe(const char* data, std::size_t length, UInt32& slot, UInt32& hash) const;
	bool hasRoom(std::size_t maxIndex) const;
	unsigned int store(const T& value, UInt32 slot, UInt32 hash);

	std::vector<UInt32>   _table;
	std::vector<UInt32>   _hashes;     // the full hash of each slot's value: most probes compare no value
	UInt32                _capacity;   // the most entries the table takes
};


template <class T>
HashVocabulary<T>::HashVocabulary(unsigned long capacity):
	_table(slotsFor(checkCapacity(capacity)), NOT_FOUND),
	_hashes(_table.size(), 0),
	_capacity(static_cast<UInt32>(capacity))
{
	bool found;
	HashVocabulary<T>::index(T(), found);
}


template <class T>
HashVocabulary<T>::HashVocabulary(DontInitialize):
	_capacity(0)
{
}


template <class T>
HashVocabulary<T>::HashVocabulary(DontInitialize, unsigned long capacity):
	_table(slotsFor(capacity), NOT_FOUND),
	_hashes(_table.size(), 0),
	_capacity(static_cast<UInt32>(capacity))
{
}


template <class T>
unsigned long HashVocabulary<T>::checkCapacity(unsigned long capacity)
{
	// A slot holds an index below the capacity, and NOT_FOUND marks a free
	// one; a table needs one slot for its placeholder.
	poco_assert(capacity > 0 && capacity < NOT_FOUND / 2);
	return capacity;
}


template <class T>
std::size_t HashVocabulary<T>::slotsFor(unsigned long capacity)
{
	// With more slots than entries every probe ends at a free slot at the
	// latest. A table of capacity 0 has no slots and takes nothing.
	return capacity == 0 ? 0 : capacity + capacity / 4 + 1;
}


template <class T>
bool HashVocabulary<T>::probe(const T& value, UInt32& slot, UInt32& hash) const
	/// Walks the linear probe sequence of value until it meets an equal
	/// entry (true) or a free slot (false, slot is where value belongs).
{
	const UInt32 slots = static_cast<UInt32>(_table.size());
	hash = VocabularyHash<T>()(value);
	slot = hash % slots;
	for (;;)
	{
		const UInt32 entry = _table[slot];
		if (entry == NOT_FOUND) return false;
		if (_hashes[slot] == hash && this->_index[entry] == value) return true;
		if (++slot == slots) slot = 0;
	}
}


template <class T>
inline bool HashVocabulary<T>::probe(const char* data, std::size_t length, UInt32& slot, UInt32& hash) const
	/// The walk of probe(), on octets.
{
	const UInt32 slots = static_cast<UInt32>(_table.size());
	hash = VocabularyHash<std::string>::bytes(data, length);
	slot = hash % slots;
	for (;;)
	{
		const UInt32 entry = _table[slot];
		if (entry == NOT_FOUND) return false;
		if (_hashes[slot] == hash && VocabularyHash<std::string>::equal(this->_index[entry], data, length)) return true;
		if (++slot == slots) slot = 0;
	}
}


template <class T>
inline bool HashVocabulary<T>::hasRoom(std::size_t maxIndex) const
{
	const std::size_t next = this->_index.size();
	return next < _capacity && next <= maxIndex;
}


template <class T>
unsigned int HashVocabulary<T>::store(const T& value, UInt32 slot, UInt32 hash)
{
	// The entry is stored before the slot refers to it, so that a failed
	// append leaves the table as it was.
	const UInt32 idx = static_cast<UInt32>(this->_index.size());
	this->_index.push_back(value);
	_table[slot] = idx;
	_hashes[slot] = hash;
	return idx;
}


template <class T>
unsigned int HashVocabulary<T>::indexWithin(const T& value, std::size_t maxIndex, bool& found)
{
	found = false;
	if (_table.empty()) return NOT_FOUND;
	UInt32 slot = 0;
	UInt32 hash = 0;
	if (probe(value, slot, hash))
	{
		found = true;
		return _table[slot];
	}
	return hasRoom(maxIndex) ? store(value, slot, hash) : NOT_FOUND;
}


template <class T>
unsigned int HashVocabulary<T>::indexWithin(const char* data, std::size_t length, std::size_t maxIndex, bool& found)
{
	found = false;
	if (_table.empty()) return NOT_FOUND;
	UInt32 slot = 0;
	UInt32 hash = 0;
	if (probe(data, length, slot, hash))
	{
		found = true;
		return _table[slot];
	}
	return hasRoom(maxIndex) ? store(std::string(data, length), slot, hash) : NOT_FOUND;
}


template <class T>
void HashVocabulary<T>::truncate(std::size_t size)
{
	// The newest entry first: no entry added before it has a probe
	// sequence through its slot, so freeing the slot loses no other entry.
	for (std::size_t idx = this->_index.size(); idx > size; --idx)
	{
		UInt32 slot = 0;
		UInt32 hash = 0;
		const bool found = probe(this->_index[idx - 1], slot, hash);
		poco_assert(found && _table[slot] == idx - 1);
		_table[slot] = NOT_FOUND;
		this->_index.truncate(idx - 1);
	}
}


template <class T>
unsigned int HashVocabulary<T>::index(const T& value, bool& found)
{
	const unsigned int idx = indexWithin(value, NOT_FOUND, found);
	if (idx == NOT_FOUND) throw Ixor::PoolOverflowException("Vocabulary hash table full");
	return idx;
}


template <class T>
inline unsigned int HashVocabulary<T>::find(const T& value) const
{
	UInt32 slot = 0;
	UInt32 hash = 0;
	return !_table.empty() && probe(value, slot, hash) ? _table[slot] : NOT_FOUND;
}


template <class T>
inline unsigned int HashVocabulary<T>::find(const char* data, std::size_t length) const
{
	UInt32 slot = 0;
	UInt32 hash = 0;
	return !_table.empty() && probe(data, length, slot, hash) ? _table[slot] : NOT_FOUND;
}


template <class T>
unsigned int HashVocabulary<T>::exists(const T& value, bool& found) const
{
	const unsigned int idx = find(value);
	found = idx != NOT_FOUND;
	return idx;
}


template <class T>
const T& HashVocabulary<T>::value(unsigned int idx) const
{
	poco_assert(this->_index.size() > idx);
	return this->_index[idx];
}


template <class T>
std::size_t HashVocabulary<T>::size() const
{
	return this->_index.size();
}


template <class T>
bool HashVocabulary<T>::empty() const
{
	return this->_index.empty();
}


template <class T>
Vocabulary<T>* HashVocabulary<T>::subtract(const Vocabulary<T>& other) const
{
	// The result has no placeholder, but it must have slots before its first
	// entry: with this table's capacity every entry of this table fits.
	return this->fillDifference(new HashVocabulary<T>(DontInitialize(), _capacity), other);
}


template <class T>
Vocabulary<T>* HashVocabulary<T>::clone() const
{
	return new HashVocabulary<T>(*this);
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_HashVocabulary_INCLUDED
