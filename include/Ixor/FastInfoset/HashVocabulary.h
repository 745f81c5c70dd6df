//
// HashVocabulary.h
//
// Library: FastInfoset
// Module:  HashVocabulary
//


#ifndef FastInfoset_HashVocabulary_INCLUDED
#define FastInfoset_HashVocabulary_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/HashedVocabulary.h"
#include "Ixor/FastInfoset/VocabularyHash.h"
#include <vector>


namespace Ixor {
namespace FastInfoset {


template <class T>
class FastInfoset_API HashVocabulary: public HashedVocabulary<T, HashVocabulary<T>>
	/// A table with an open-addressing hash index of fixed capacity beside
	/// the entries. It never grows: it holds at most capacity distinct
	/// values, the placeholder included; index() of one more throws
	/// Ixor::PoolOverflowException "Vocabulary hash table full".
	///
	/// The index has a quarter more slots than the capacity, so that a full
	/// table still finds a value, or its absence, in a few probes.
{
public:
	using Vocabulary<T>::NOT_FOUND;

	explicit HashVocabulary(unsigned long capacity);
		/// A table that takes capacity values (at least 1), with its
		/// placeholder at index 0.

	explicit HashVocabulary(DontInitialize);
		/// A table without placeholder and without slots: it can hold
		/// nothing, and index() of any value throws "Vocabulary hash table
		/// full". subtract() builds its results with slots.

	Vocabulary<T>* subtract(const Vocabulary<T>& other) const override;
		/// The result has the capacity of this table.

	Vocabulary<T>* clone() const override;

private:
	friend class HashedVocabulary<T, HashVocabulary<T>>;

	HashVocabulary(DontInitialize, unsigned long capacity);

	static unsigned long checkCapacity(unsigned long capacity);
	static std::size_t slotsFor(unsigned long capacity);
	template <class Matches>
	bool walk(UInt32 hash, std::size_t& slot, Matches matches) const;
	unsigned int indexAt(std::size_t slot) const;
	bool hasRoom(std::size_t maxIndex) const;
	bool makeRoom();
	void place(std::size_t slot, UInt32 hash, UInt32 index);
	void free(std::size_t slot);

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
template <class Matches>
inline bool HashVocabulary<T>::walk(UInt32 hash, std::size_t& slot, Matches matches) const
	/// Walks the linear probe sequence of hash until it meets an entry that
	/// matches (true) or a free slot (false, slot is where the value
	/// belongs).
{
	const std::size_t slots = _table.size();
	if (slots == 0) return false;
	slot = hash % slots;
	for (;;)
	{
		const UInt32 entry = _table[slot];
		if (entry == NOT_FOUND) return false;
		if (_hashes[slot] == hash && matches(this->_index[entry])) return true;
		if (++slot == slots) slot = 0;
	}
}


template <class T>
inline unsigned int HashVocabulary<T>::indexAt(std::size_t slot) const
{
	return _table[slot];
}


template <class T>
inline bool HashVocabulary<T>::hasRoom(std::size_t maxIndex) const
{
	const std::size_t next = this->_index.size();
	return next < _capacity && next <= maxIndex;
}


template <class T>
inline bool HashVocabulary<T>::makeRoom()
{
	// The slots are made for the capacity: they never move.
	return false;
}


template <class T>
inline void HashVocabulary<T>::place(std::size_t slot, UInt32 hash, UInt32 index)
{
	_table[slot] = index;
	_hashes[slot] = hash;
}


template <class T>
inline void HashVocabulary<T>::free(std::size_t slot)
{
	_table[slot] = NOT_FOUND;
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
