//
// WriterTables.h
//
// Library: FastInfoset
// Module:  WriterTables
//
// The writer's lookups in its vocabulary. Internal: this header is not
// installed.
//


#ifndef FastInfoset_WriterTables_INCLUDED
#define FastInfoset_WriterTables_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "Ixor/FastInfoset/Encoder.h"
#include "Ixor/FastInfoset/HashVocabulary.h"
#include "Ixor/FastInfoset/MapVocabulary.h"
#include "Ixor/FastInfoset/QualifiedNameEntry.h"
#include "Ixor/FastInfoset/VocabularyHash.h"
#include <cstddef>
#include <string>


namespace Ixor {
namespace FastInfoset {


class WriterTables
	/// Finds and adds the writer's strings by their octets and its names by
	/// their parts, through views of the vocabulary's tables as their
	/// concrete kinds (no virtual call, no string built for a lookup) and
	/// caches of recent answers. Every view and remembered answer is dropped
	/// when the vocabulary gets new tables: tables may take the places that
	/// freed ones had, so nothing found before may be trusted.
	///
	/// A table that cannot take a new entry (a full hash table, or one at
	/// the format's last index) answers NOT_FOUND and takes nothing more.
{
public:
	static const unsigned int NOT_FOUND = Vocabulary<std::string>::NOT_FOUND;

	struct StoredName
		/// The parts of a name as the tables hold them (they stay in place
		/// while the tables do), or null where they hold none.
	{
		const std::string* pPrefix;
		const std::string* pURI;
		const std::string* pLocalName;
	};

	explicit WriterTables(DocumentVocabulary& vocabulary);
		/// Looks up in vocabulary, which must outlive this object; it may be
		/// assigned to in between.

	DocumentVocabulary& vocabulary();

	unsigned int find(DocumentVocabulary::ID id, const char* data, std::size_t length);
		/// The index of a string in table id, or NOT_FOUND; never adds.

	unsigned int indexOf(DocumentVocabulary::ID id, const char* data, std::size_t length, bool& existed);
		/// The index of a string in table id, added when absent: one walk of
		/// the table, and the string is built only to be added.

	unsigned int findName(const std::string& prefix, const std::string& uri, const std::string& localName, bool element, StoredName* pStored);
		/// The index of a name in the element or attribute name table, or
		/// NOT_FOUND; never adds. With pStored, also where the tables hold
		/// the parts of a name found.

	unsigned int addName(const QualifiedNameEntry& name, bool element);
		/// The index of a new name, or NOT_FOUND when its table takes no
		/// more.

	std::size_t nameCount(bool element);

	struct Sizes
		/// How many entries each table holds.
	{
		std::size_t strings[DocumentVocabulary::CONTENT_CHARACTER_CHUNK + 1];
		std::size_t names[2];
	};

	Sizes sizes();

	bool canTruncate();
		/// Whether every table can forget entries (map and hash tables).

	void truncate(const Sizes& sizes);
		/// Forgets the entries added since the tables had sizes, keeping
		/// their memory; the tables can (canTruncate()).

	const std::string* stored(DocumentVocabulary::ID id, unsigned int index);
		/// The string at index of table id as the table holds it; null for
		/// NOT_FOUND.

private:
	struct StringTableView
	{
		const Vocabulary<std::string>*     pTable;
		const MapVocabulary<std::string>*  pMap;
		const HashVocabulary<std::string>* pHash;
	};

	struct NameTableView
	{
		const Vocabulary<QualifiedNameEntry>*     pTable;
		const MapVocabulary<QualifiedNameEntry>*  pMap;
		const HashVocabulary<QualifiedNameEntry>* pHash;
	};

	struct NameCacheSlot
		/// A qualified name found before: its three parts as the tables hold
		/// them, and its index.
	{
		const void*        pNameTable;
		const void*        pLocalTable;
		const std::string* pLocalName;
		const std::string* pPrefix;
		const std::string* pURI;
		UInt32             hash;
		unsigned int       index;
	};

	enum
	{
		NAME_CACHE_SIZE = 512
	};

	void checkViews();
	void refreshViews();
	StringTableView& viewOf(DocumentVocabulary::ID id);
	NameTableView& nameViewOf(bool element);
	void forgetNames();
	unsigned int findName(const QualifiedNameEntry& name, bool element);
	unsigned int findInOther(DocumentVocabulary::ID id, const char* data, std::size_t length);
	unsigned int indexOfInOther(DocumentVocabulary::ID id, const char* data, std::size_t length, bool& existed);

	static const std::size_t MAX_INDEX = Encoder::MAXINT20;   // the last index a document can refer to

	DocumentVocabulary& _vocabulary;
	UInt64              _viewsRevision;
	StringTableView     _views[DocumentVocabulary::CONTENT_CHARACTER_CHUNK + 1];
	NameTableView       _nameViews[2];
	// A slot whose generation is another is empty, and only a slot of this
	// generation is read: the slots need no clearing when a writer is made
	// or its tables change, only the small array of their generations does
	// when the count wraps around.
	UInt32              _generation;
	UInt32              _slotGenerations[2][NAME_CACHE_SIZE];
	NameCacheSlot       _nameCache[2][NAME_CACHE_SIZE];
	std::string         _text;   // scratch for tables that take only strings
};


//
// inlines
//
inline DocumentVocabulary& WriterTables::vocabulary()
{
	return _vocabulary;
}


FastInfoset_ALWAYS_INLINE void WriterTables::checkViews()
{
	if (_viewsRevision != _vocabulary.revision()) refreshViews();
}


FastInfoset_ALWAYS_INLINE WriterTables::StringTableView& WriterTables::viewOf(DocumentVocabulary::ID id)
{
	checkViews();
	StringTableView& view = _views[id];
	if (!view.pTable)
	{
		const Vocabulary<std::string>* pTable = _vocabulary.vocabulary(id);
		view.pTable = pTable;
		view.pMap = dynamic_cast<const MapVocabulary<std::string>*>(pTable);
		view.pHash = view.pMap ? 0 : dynamic_cast<const HashVocabulary<std::string>*>(pTable);
	}
	return view;
}


inline unsigned int WriterTables::find(DocumentVocabulary::ID id, const char* data, std::size_t length)
{
	const StringTableView& view = viewOf(id);
	if (view.pMap) return view.pMap->find(data, length);
	if (view.pHash) return view.pHash->find(data, length);
	return findInOther(id, data, length);
}


inline unsigned int WriterTables::indexOf(DocumentVocabulary::ID id, const char* data, std::size_t length, bool& existed)
{
	const StringTableView& view = viewOf(id);
	if (view.pMap) return const_cast<MapVocabulary<std::string>*>(view.pMap)->indexWithin(data, length, MAX_INDEX, existed);
	if (view.pHash) return const_cast<HashVocabulary<std::string>*>(view.pHash)->indexWithin(data, length, MAX_INDEX, existed);
	return indexOfInOther(id, data, length, existed);
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_WriterTables_INCLUDED
