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
{
public:
	using Vocabulary<T>::index;
	using Vocabulary<T>::NOT_FOUND;

	explicit HashVocabulary(unsigned long capacity);
		/// A table of capacity slots (at least 1) with its placeholder at
		/// index 0.

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

	unsigned int index(const char* data, std::size_t length, bool& found);
		/// For tables of strings: index() of the string of length octets at
		/// data, which is built only to be added.

private:
	enum Probe
	{
		PROBE_FOUND,
		PROBE_EMPTY,
		PROBE_FULL
	};

	HashVocabulary(DontInitialize, unsigned long capacity);

	static unsigned long checkCapacity(unsigned long capacity);
	Probe probe(const T& value, UInt32& slot, UInt32& hash) const;
	Probe probe(const char* data, std::size_t length, UInt32& slot, UInt32& hash) const;

	std::vector<UInt32>   _table;
	std::vector<UInt32>   _hashes;     // the full hash of each slot's value: most probes compare no value
	UInt32                _capacity;
};


template <class T>
HashVocabulary<T>::HashVocabulary(unsigned long capacity):
	_table(checkCapacity(capacity), NOT_FOUND),
	_hashes(capacity, 0),
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
	_table(capacity, NOT_FOUND),
	_hashes(capacity, 0),
	_capacity(static_cast<UInt32>(capacity))
{
}


template <class T>
unsigned long HashVocabulary<T>::checkCapacity(unsigned long capacity)
{
	// A slot holds an index below the capacity, and NOT_FOUND marks a free
	// one; a table needs one slot for its placeholder.
	poco_assert(capacity > 0 && capacity < NOT_FOUND);
	return capacity;
}


template <class T>
typename HashVocabulary<T>::Probe HashVocabulary<T>::probe(const T& value, UInt32& slot, UInt32& hash) const
	/// Walks the linear probe sequence of value until it meets an equal
	/// entry or a free slot. The walk gives up only after cap + 2 probes,
	/// the first two slots being looked at twice; that count is the format's
	/// reference behaviour and is kept.
{
	const UInt32 cap = _capacity;
	if (cap == 0) return PROBE_FULL;
	hash = VocabularyHash<T>()(value);
	slot = hash % cap;
	for (UInt32 step = 0; ; ++step)
	{
		const UInt32 entry = _table[slot];
		if (entry == NOT_FOUND) return PROBE_EMPTY;
		if (_hashes[slot] == hash && this->_index[entry] == value) return PROBE_FOUND;
		if (step > cap) return PROBE_FULL;
		if (++slot == cap) slot = 0;
	}
}


template <class T>
unsigned int HashVocabulary<T>::index(const T& value, bool& found)
{
	UInt32 slot = 0;
	UInt32 hash = 0;
	switch (probe(value, slot, hash))
	{
	case PROBE_FOUND:
		found = true;
		return _table[slot];
	case PROBE_FULL:
		throw Ixor::PoolOverflowException("Vocabulary hash table full");
	default:
		break;
	}
	// The entry is stored before the slot refers to it, so that a failed
	// append leaves the table as it was.
	const UInt32 idx = static_cast<UInt32>(this->_index.size());
	this->_index.push_back(value);
	_table[slot] = idx;
	_hashes[slot] = hash;
	found = false;
	return idx;
}


template <class T>
inline unsigned int HashVocabulary<T>::find(const T& value) const
{
	UInt32 slot = 0;
	UInt32 hash = 0;
	return probe(value, slot, hash) == PROBE_FOUND ? _table[slot] : NOT_FOUND;
}


template <class T>
inline typename HashVocabulary<T>::Probe HashVocabulary<T>::probe(const char* data, std::size_t length, UInt32& slot, UInt32& hash) const
	/// The walk of probe(), on octets.
{
	const UInt32 cap = _capacity;
	if (cap == 0) return PROBE_FULL;
	hash = VocabularyHash<std::string>::bytes(data, length);
	slot = hash % cap;
	for (UInt32 step = 0; ; ++step)
	{
		const UInt32 entry = _table[slot];
		if (entry == NOT_FOUND) return PROBE_EMPTY;
		if (_hashes[slot] == hash && VocabularyHash<std::string>::equal(this->_index[entry], data, length)) return PROBE_FOUND;
		if (step > cap) return PROBE_FULL;
		if (++slot == cap) slot = 0;
	}
}


template <class T>
inline unsigned int HashVocabulary<T>::find(const char* data, std::size_t length) const
{
	UInt32 slot = 0;
	UInt32 hash = 0;
	return probe(data, length, slot, hash) == PROBE_FOUND ? _table[slot] : NOT_FOUND;
}


template <class T>
unsigned int HashVocabulary<T>::index(const char* data, std::size_t length, bool& found)
{
	UInt32 slot = 0;
	UInt32 hash = 0;
	switch (probe(data, length, slot, hash))
	{
	case PROBE_FOUND:
		found = true;
		return _table[slot];
	case PROBE_FULL:
		throw Ixor::PoolOverflowException("Vocabulary hash table full");
	default:
		break;
	}
	const UInt32 idx = static_cast<UInt32>(this->_index.size());
	this->_index.push_back(std::string(data, length));
	_table[slot] = idx;
	_hashes[slot] = hash;
	found = false;
	return idx;
}


template <class T>
unsigned int HashVocabulary<T>::exists(const T& value, bool& found) const
{
	UInt32 slot = 0;
	UInt32 hash = 0;
	found = probe(value, slot, hash) == PROBE_FOUND;
	return found ? _table[slot] : NOT_FOUND;
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
