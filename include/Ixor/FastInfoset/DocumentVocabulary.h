//
// DocumentVocabulary.h
//
// Library: FastInfoset
// Module:  DocumentVocabulary
//


#ifndef FastInfoset_DocumentVocabulary_INCLUDED
#define FastInfoset_DocumentVocabulary_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/DecodingAlgorithm.h"
#include "Ixor/FastInfoset/DocumentRestrictedAlphabet.h"
#include "Ixor/FastInfoset/EncodingAlgorithm.h"
#include "Ixor/FastInfoset/QualifiedNameEntry.h"
#include "Ixor/FastInfoset/Vocabulary.h"
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API DocumentVocabulary
	/// The complete vocabulary of one document: the eight string tables, the
	/// element-name and attribute-name tables, the restricted alphabets and
	/// the encoding and decoding algorithm tables.
	///
	/// Table indexes are the format's indexes: every table holds a
	/// placeholder at index 0, and a fresh vocabulary holds the prefix "xml"
	/// and the XML namespace name at index 1 of the prefix and namespace-name
	/// tables. A vocabulary constructed with a URI is an external vocabulary
	/// that documents can name instead of carrying its entries.
{
public:
	enum ID
		/// Table identifiers, in the order of the initial vocabulary's
		/// components.
	{
		RESTRICTED_ALPHABET     = 0,
		ENCODING_ALGORITHM      = 1,
		PREFIX                  = 2,
		NAMESPACE_NAME          = 3,
		LOCAL_NAME              = 4,
		OTHER_NCNAME            = 5,
		OTHER_URI               = 6,
		ATTRIBUTE_VALUE         = 7,
		OTHER_STRING            = 8,
		CONTENT_CHARACTER_CHUNK = 9,
		ELEMENT_NAME            = 10,
		ATTRIBUTE_NAME          = 11
	};

	enum VocabularyImpl
		/// The kind of tables: hash tables of fixed capacity, ordered maps,
		/// or append-only vectors (reading only).
	{
		VOC_HASH   = 0,
		VOC_MAP    = 1,
		VOC_VECTOR = 2
	};

	enum CharacterStringEncoding
		/// The two-bit selector of an encoded character string.
	{
		UTF8               = 0,
		UTF16              = 1,
		RESTRICTEDALPHABET = 2,
		ENCODINGALGORITHM  = 3
	};

	explicit DocumentVocabulary(DontInitialize);
		/// No tables; hash kind; default alphabets and algorithms; no URI.

	explicit DocumentVocabulary(VocabularyImpl impl = VOC_HASH);
		/// A fresh vocabulary with tables of the given kind.

	DocumentVocabulary(const std::string& uri, VocabularyImpl impl = VOC_HASH);
		/// A fresh external vocabulary known by uri.

	DocumentVocabulary(const DocumentVocabulary& other);
		/// A deep copy; the decodings are the built-in ones.

	DocumentVocabulary& operator = (const DocumentVocabulary& other);
		/// Replaces every table, the alphabets, the encodings, the kind and
		/// the URI; keeps this vocabulary's own decodings.

	~DocumentVocabulary();

	Vocabulary<std::string>* vocabulary(ID id);
	const Vocabulary<std::string>* vocabulary(ID id) const;
		/// The string table id (PREFIX to CONTENT_CHARACTER_CHUNK).

	unsigned int index(ID id, const std::string& value, bool& found);
		/// The index of value in table id, added when absent.

	unsigned int exists(ID id, const std::string& value, bool& found) const;
		/// The index of value in table id, or Vocabulary<std::string>::NOT_FOUND.

	const std::string& value(ID id, unsigned int idx) const;
		/// The string at idx of table id.

	Vocabulary<QualifiedNameEntry>* elementVocabulary();
	const Vocabulary<QualifiedNameEntry>* elementVocabulary() const;
	Vocabulary<QualifiedNameEntry>* attributeVocabulary();
	const Vocabulary<QualifiedNameEntry>* attributeVocabulary() const;

	void initialize(ID id, Vocabulary<std::string>* pTable);
		/// Replaces table id by pTable and takes ownership of it.

	DocumentRestrictedAlphabet& restrictedAlphabets();
	const DocumentRestrictedAlphabet& restrictedAlphabets() const;

	EncodingAlgorithm& encodings();
	const EncodingAlgorithm& encodings() const;

	DecodingAlgorithm& decodings();
	const DecodingAlgorithm& decodings() const;

	const std::string& getURI() const;
	VocabularyImpl impl() const;

	UInt64 revision() const;
		/// A number that changes whenever a table of this vocabulary is
		/// replaced or dropped (reset, clear, copy, assignment, initialize),
		/// so that a user may keep pointers to the tables while it stays the
		/// same.

	void reset();
		/// Back to a fresh vocabulary of the same kind; keeps the alphabets,
		/// the algorithms and the URI. Vector tables are cut back to their
		/// first entries and keep their storage, so that a reader that
		/// resets for each document allocates nothing for them.

	bool truncate(const DocumentVocabulary& base);
		/// For a vocabulary with vector tables that is base with entries
		/// appended since it was copied from base (the case of a document
		/// read on top of a vocabulary given in advance): drops the appended
		/// entries and alphabets, keeping their storage, so that it equals
		/// base again, and returns true. Returns false, changing nothing,
		/// when the tables are of another kind or smaller than base's.

	void clear();
		/// Deletes every table.

	void copy(const DocumentVocabulary& other);
		/// Deep copy into a vocabulary without tables.

	DocumentVocabulary operator - (const DocumentVocabulary& other) const;
		/// The entries of this vocabulary that other lacks, table by table,
		/// from index 0 in this vocabulary's order.

private:
	template <class StringTable, class NameTable>
	void create();
	bool truncateTables(const std::size_t stringSizes[], std::size_t elementNames, std::size_t attributeNames);
	void init();
	Vocabulary<std::string>* table(ID id) const;
	void swapContent(DocumentVocabulary& other);

	VocabularyImpl                          _impl;
	std::vector<Vocabulary<std::string>*>   _vocabularies;
	DocumentRestrictedAlphabet              _alphabets;
	EncodingAlgorithm                       _encodings;
	DecodingAlgorithm                       _decodings;
	Vocabulary<QualifiedNameEntry>*         _pElementVocabulary;
	Vocabulary<QualifiedNameEntry>*         _pAttributeVocabulary;
	std::string                             _uri;
	UInt64                                  _revision;
	bool                                    _vectorTables;   // every table is a VectorVocabulary
};


//
// inlines
//
inline UInt64 DocumentVocabulary::revision() const
{
	return _revision;
}


inline Vocabulary<std::string>* DocumentVocabulary::table(ID id) const
	/// A vocabulary has its tables after reset(), or as a copy or difference
	/// of one that has them.
{
	Vocabulary<std::string>* pTable = static_cast<std::size_t>(id) < _vocabularies.size() ? _vocabularies[id] : 0;
	poco_assert(pTable);
	return pTable;
}


inline Vocabulary<std::string>* DocumentVocabulary::vocabulary(ID voc)
{
	poco_assert(voc > DocumentVocabulary::ENCODING_ALGORITHM && voc < DocumentVocabulary::ELEMENT_NAME);
	return table(voc);
}


inline const Vocabulary<std::string>* DocumentVocabulary::vocabulary(ID voc) const
{
	poco_assert(voc > DocumentVocabulary::ENCODING_ALGORITHM && voc < DocumentVocabulary::ELEMENT_NAME);
	return table(voc);
}


inline unsigned int DocumentVocabulary::index(ID vocabulary, const std::string& value, bool& found)
{
	poco_assert(vocabulary > DocumentVocabulary::ENCODING_ALGORITHM && vocabulary < DocumentVocabulary::ELEMENT_NAME);
	return table(vocabulary)->index(value, found);
}


inline unsigned int DocumentVocabulary::exists(ID vocabulary, const std::string& value, bool& found) const
{
	poco_assert(vocabulary > DocumentVocabulary::ENCODING_ALGORITHM && vocabulary < DocumentVocabulary::ELEMENT_NAME);
	return table(vocabulary)->exists(value, found);
}


inline const std::string& DocumentVocabulary::value(ID vocabulary, unsigned int idx) const
{
	poco_assert(vocabulary > DocumentVocabulary::ENCODING_ALGORITHM && vocabulary < DocumentVocabulary::ELEMENT_NAME);
	return table(vocabulary)->value(idx);
}


inline Vocabulary<QualifiedNameEntry>* DocumentVocabulary::elementVocabulary()
{
	poco_assert(_pElementVocabulary);
	return _pElementVocabulary;
}


inline const Vocabulary<QualifiedNameEntry>* DocumentVocabulary::elementVocabulary() const
{
	poco_assert(_pElementVocabulary);
	return _pElementVocabulary;
}


inline Vocabulary<QualifiedNameEntry>* DocumentVocabulary::attributeVocabulary()
{
	poco_assert(_pAttributeVocabulary);
	return _pAttributeVocabulary;
}


inline const Vocabulary<QualifiedNameEntry>* DocumentVocabulary::attributeVocabulary() const
{
	poco_assert(_pAttributeVocabulary);
	return _pAttributeVocabulary;
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_DocumentVocabulary_INCLUDED
