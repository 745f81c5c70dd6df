//
// HashedVocabulary.h
//
// Library: FastInfoset
// Module:  HashedVocabulary
//


#ifndef FastInfoset_HashedVocabulary_INCLUDED
#define FastInfoset_HashedVocabulary_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/Vocabulary.h"
#include "Ixor/FastInfoset/VocabularyHash.h"
#include "Poco/Exception.h"
#include <string>


namespace Ixor {
namespace FastInfoset {


template <class T, class Slots>
class HashedVocabulary: public Vocabulary<T>
	/// What the tables with a hash index beside their entries (HashVocabulary,
	/// MapVocabulary) do alike: lookups, additions and truncation through
	/// the index, which Slots, the concrete table, keeps its own way. It
	/// provides:
	///
	///   template <class Matches>
	///   bool walk(UInt32 hash, std::size_t& slot, Matches matches) const;
	///       walks the probe sequence of hash to an entry for which
	///       matches(entry) holds (true) or to a free slot (false); slot is
	///       where the entry is or belongs (any slot, without slots)
	///   unsigned int indexAt(std::size_t slot) const;
	///   bool hasRoom(std::size_t maxIndex) const;     for one more entry
	///   bool makeRoom();      true when the slots moved to take one more
	///   void place(std::size_t slot, UInt32 hash, UInt32 index);
	///   void free(std::size_t slot);
	///
	/// Entries are found by linear probing and never leave except through
	/// truncate(), newest first.
{
public:
	using Vocabulary<T>::index;
	using Vocabulary<T>::NOT_FOUND;

	unsigned int index(const T& value, bool& found) override;
		/// Throws Ixor::PoolOverflowException "Vocabulary hash table full"
		/// for a new value that the table cannot take; the table is then
		/// unchanged.

	unsigned int exists(const T& value, bool& found) const override;

	const T& value(unsigned int idx) const override;
		/// Asserts that idx is below size().

	std::size_t size() const override;
	bool empty() const override;

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

protected:
	HashedVocabulary();
	HashedVocabulary(const HashedVocabulary& other);

private:
	bool probe(const T& value, UInt32 hash, std::size_t& slot) const;
	bool probe(const char* data, std::size_t length, UInt32 hash, std::size_t& slot) const;
	template <class... Key>
	unsigned int add(UInt32 hash, std::size_t maxIndex, bool& found, const Key&... key);

	const Slots& slots() const;
	Slots& slots();
};


template <class T, class Slots>
HashedVocabulary<T, Slots>::HashedVocabulary()
{
}


template <class T, class Slots>
HashedVocabulary<T, Slots>::HashedVocabulary(const HashedVocabulary& other):
	Vocabulary<T>(other)
{
}


template <class T, class Slots>
inline const Slots& HashedVocabulary<T, Slots>::slots() const
{
	return static_cast<const Slots&>(*this);
}


template <class T, class Slots>
inline Slots& HashedVocabulary<T, Slots>::slots()
{
	return static_cast<Slots&>(*this);
}


template <class T, class Slots>
inline bool HashedVocabulary<T, Slots>::probe(const T& value, UInt32 hash, std::size_t& slot) const
{
	return slots().walk(hash, slot, [&](const T& entry) { return entry == value; });
}


template <class T, class Slots>
inline bool HashedVocabulary<T, Slots>::probe(const char* data, std::size_t length, UInt32 hash, std::size_t& slot) const
{
	return slots().walk(hash, slot, [&](const T& entry) { return VocabularyHash<std::string>::equal(entry, data, length); });
}


template <class T, class Slots>
inline unsigned int HashedVocabulary<T, Slots>::find(const T& value) const
{
	std::size_t slot = 0;
	return probe(value, VocabularyHash<T>()(value), slot) ? slots().indexAt(slot) : NOT_FOUND;
}


template <class T, class Slots>
inline unsigned int HashedVocabulary<T, Slots>::find(const char* data, std::size_t length) const
{
	std::size_t slot = 0;
	return probe(data, length, VocabularyHash<std::string>::bytes(data, length), slot) ? slots().indexAt(slot) : NOT_FOUND;
}


template <class T, class Slots>
template <class... Key>
inline unsigned int HashedVocabulary<T, Slots>::add(UInt32 hash, std::size_t maxIndex, bool& found, const Key&... key)
	/// indexWithin() of the value that key gives (a T, or the octets of a
	/// string), built only to be added.
{
	std::size_t slot = 0;
	found = probe(key..., hash, slot);
	if (found) return slots().indexAt(slot);
	if (!slots().hasRoom(maxIndex)) return NOT_FOUND;
	if (slots().makeRoom()) probe(key..., hash, slot);
	// The entry is stored before the slot refers to it, so that a failed
	// append leaves the table as it was.
	const UInt32 idx = static_cast<UInt32>(this->_index.size());
	this->_index.emplace_back(key...);
	slots().place(slot, hash, idx);
	return idx;
}


template <class T, class Slots>
unsigned int HashedVocabulary<T, Slots>::indexWithin(const T& value, std::size_t maxIndex, bool& found)
{
	return add(VocabularyHash<T>()(value), maxIndex, found, value);
}


template <class T, class Slots>
unsigned int HashedVocabulary<T, Slots>::indexWithin(const char* data, std::size_t length, std::size_t maxIndex, bool& found)
{
	return add(VocabularyHash<std::string>::bytes(data, length), maxIndex, found, data, length);
}


template <class T, class Slots>
unsigned int HashedVocabulary<T, Slots>::index(const T& value, bool& found)
{
	const unsigned int idx = indexWithin(value, NOT_FOUND, found);
	if (idx == NOT_FOUND) throw Ixor::PoolOverflowException("Vocabulary hash table full");
	return idx;
}


template <class T, class Slots>
unsigned int HashedVocabulary<T, Slots>::exists(const T& value, bool& found) const
{
	const unsigned int idx = find(value);
	found = idx != NOT_FOUND;
	return idx;
}


template <class T, class Slots>
void HashedVocabulary<T, Slots>::truncate(std::size_t size)
{
	// The newest entry first: no entry added before it has a probe
	// sequence through its slot, so freeing the slot loses no other entry.
	for (std::size_t idx = this->_index.size(); idx > size; --idx)
	{
		const T& entry = this->_index[idx - 1];
		std::size_t slot = 0;
		const bool found = probe(entry, VocabularyHash<T>()(entry), slot);
		poco_assert(found && slots().indexAt(slot) == idx - 1);
		slots().free(slot);
		this->_index.truncate(idx - 1);
	}
}


template <class T, class Slots>
const T& HashedVocabulary<T, Slots>::value(unsigned int idx) const
{
	poco_assert(this->_index.size() > idx);
	return this->_index[idx];
}


template <class T, class Slots>
std::size_t HashedVocabulary<T, Slots>::size() const
{
	return this->_index.size();
}


template <class T, class Slots>
bool HashedVocabulary<T, Slots>::empty() const
{
	return this->_index.empty();
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_HashedVocabulary_INCLUDED
