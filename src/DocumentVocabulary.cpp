#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "Ixor/FastInfoset/HashVocabulary.h"
#include "Ixor/FastInfoset/MapVocabulary.h"
#include "Ixor/FastInfoset/VectorVocabulary.h"
#include <memory>
#include <utility>


namespace Ixor {
namespace FastInfoset {


namespace
{
	const char* const XML_PREFIX = "xml";
	const char* const XML_NAMESPACE = "http://www.w3.org/XML/1998/namespace";

	// Primes; only the hash tables use them, as their fixed capacities.
	const unsigned long NAME_CAPACITY            = 10009;
	const unsigned long PREFIX_CAPACITY          = 251;
	const unsigned long NAMESPACE_NAME_CAPACITY  = 251;
	const unsigned long LOCAL_NAME_CAPACITY      = 40009;
	const unsigned long OTHER_NCNAME_CAPACITY    = 40009;
	const unsigned long OTHER_URI_CAPACITY       = 19;
	const unsigned long ATTRIBUTE_VALUE_CAPACITY = 40009;
	const unsigned long OTHER_STRING_CAPACITY    = 19;
	const unsigned long CHARACTER_CHUNK_CAPACITY = 65521;

	const std::size_t TABLE_SLOTS = DocumentVocabulary::CONTENT_CHARACTER_CHUNK + 1;


	template <class T>
	Vocabulary<T>* difference(const Vocabulary<T>* pThis, const Vocabulary<T>* pOther)
	{
		if (!pThis) return 0;
		return pOther ? pThis->subtract(*pOther) : pThis->clone();
	}
}


DocumentVocabulary::DocumentVocabulary(DontInitialize):
	_impl(VOC_HASH),
	_pElementVocabulary(0),
	_pAttributeVocabulary(0),
	_revision(0),
	_vectorTables(false)
{
}


DocumentVocabulary::DocumentVocabulary(VocabularyImpl impl):
	DocumentVocabulary(std::string(), impl)
{
}


DocumentVocabulary::DocumentVocabulary(const std::string& uri, VocabularyImpl impl):
	_impl(impl),
	_pElementVocabulary(0),
	_pAttributeVocabulary(0),
	_uri(uri),
	_revision(0),
	_vectorTables(false)
{
	try
	{
		reset();
	}
	catch (...)
	{
		clear();
		throw;
	}
}


DocumentVocabulary::DocumentVocabulary(const DocumentVocabulary& other):
	_impl(VOC_HASH),
	_pElementVocabulary(0),
	_pAttributeVocabulary(0),
	_revision(0),
	_vectorTables(false)
{
	try
	{
		copy(other);
	}
	catch (...)
	{
		clear();
		throw;
	}
}


DocumentVocabulary& DocumentVocabulary::operator = (const DocumentVocabulary& other)
{
	if (&other != this)
	{
		// Built aside first, so that a failure leaves this vocabulary as it was.
		DocumentVocabulary copied(other);
		swapContent(copied);
	}
	return *this;
}


DocumentVocabulary::~DocumentVocabulary()
{
	clear();
}


void DocumentVocabulary::swapContent(DocumentVocabulary& other)
	/// Everything but the decodings, which each vocabulary keeps.
{
	++_revision;
	++other._revision;
	std::swap(_impl, other._impl);
	_vocabularies.swap(other._vocabularies);
	std::swap(_alphabets, other._alphabets);
	std::swap(_encodings, other._encodings);
	std::swap(_pElementVocabulary, other._pElementVocabulary);
	std::swap(_pAttributeVocabulary, other._pAttributeVocabulary);
	_uri.swap(other._uri);
	std::swap(_vectorTables, other._vectorTables);
}


void DocumentVocabulary::initialize(ID vocabulary, Vocabulary<std::string>* pTable)
{
	std::unique_ptr<Vocabulary<std::string>> pOwned(pTable);
	poco_assert(vocabulary > DocumentVocabulary::ENCODING_ALGORITHM && vocabulary < DocumentVocabulary::ELEMENT_NAME);
	++_revision;
	_vectorTables = false;
	// A vocabulary without tables gets empty slots, so that tables can be
	// given one by one.
	if (_vocabularies.size() < TABLE_SLOTS) _vocabularies.resize(TABLE_SLOTS, 0);
	Vocabulary<std::string>*& pSlot = _vocabularies[vocabulary];
	if (pSlot != pTable) delete pSlot;
	pSlot = pOwned.release();
}


DocumentRestrictedAlphabet& DocumentVocabulary::restrictedAlphabets()
{
	return _alphabets;
}


const DocumentRestrictedAlphabet& DocumentVocabulary::restrictedAlphabets() const
{
	return _alphabets;
}


EncodingAlgorithm& DocumentVocabulary::encodings()
{
	return _encodings;
}


const EncodingAlgorithm& DocumentVocabulary::encodings() const
{
	return _encodings;
}


DecodingAlgorithm& DocumentVocabulary::decodings()
{
	return _decodings;
}


const DecodingAlgorithm& DocumentVocabulary::decodings() const
{
	return _decodings;
}


const std::string& DocumentVocabulary::getURI() const
{
	return _uri;
}


DocumentVocabulary::VocabularyImpl DocumentVocabulary::impl() const
{
	return _impl;
}


void DocumentVocabulary::reset()
{
	// An unknown kind would create no tables, and the vocabulary would fail
	// at its first use far from the cause; it is refused before the current
	// tables are dropped.
	const int impl = static_cast<int>(_impl);
	if (impl != VOC_HASH && impl != VOC_MAP && impl != VOC_VECTOR)
		throw Ixor::InvalidArgumentException("Unknown vocabulary implementation kind");
	// The placeholders, and "xml" and its namespace.
	static const std::size_t FRESH_SIZES[TABLE_SLOTS] = {0, 0, 2, 2, 1, 1, 1, 1, 1, 1};
	if (_impl == VOC_VECTOR && truncateTables(FRESH_SIZES, 1, 1))
	{
		++_revision;
		return;
	}

	clear();
	_vocabularies.reserve(TABLE_SLOTS);
	_vocabularies.push_back(0);
	_vocabularies.push_back(0);
	switch (_impl)
	{
	case VOC_HASH:
		create<HashVocabulary<std::string>, HashVocabulary<QualifiedNameEntry>>();
		break;
	case VOC_MAP:
		create<MapVocabulary<std::string>, MapVocabulary<QualifiedNameEntry>>();
		break;
	case VOC_VECTOR:
		create<VectorVocabulary<std::string>, VectorVocabulary<QualifiedNameEntry>>();
		_vectorTables = true;
		break;
	}
	init();
}


bool DocumentVocabulary::truncate(const DocumentVocabulary& base)
{
	if (base._vocabularies.size() != TABLE_SLOTS || !base._pElementVocabulary || !base._pAttributeVocabulary) return false;
	std::size_t sizes[TABLE_SLOTS] = {};
	for (int id = PREFIX; id <= CONTENT_CHARACTER_CHUNK; ++id) sizes[id] = base._vocabularies[id]->size();
	if (!truncateTables(sizes, base._pElementVocabulary->size(), base._pAttributeVocabulary->size())) return false;
	++_revision;
	_alphabets.restore(base._alphabets);
	return true;
}


bool DocumentVocabulary::truncateTables(const std::size_t stringSizes[], std::size_t elementNames, std::size_t attributeNames)
	/// Vector tables only append, so what was added since they had these
	/// sizes is a suffix, and cutting it off restores them.
{
	if (!_vectorTables || _vocabularies.size() != TABLE_SLOTS) return false;
	for (int id = PREFIX; id <= CONTENT_CHARACTER_CHUNK; ++id)
	{
		if (_vocabularies[id]->size() < stringSizes[id]) return false;
	}
	if (_pElementVocabulary->size() < elementNames || _pAttributeVocabulary->size() < attributeNames) return false;
	for (int id = PREFIX; id <= CONTENT_CHARACTER_CHUNK; ++id)
	{
		static_cast<VectorVocabulary<std::string>*>(_vocabularies[id])->truncate(stringSizes[id]);
	}
	static_cast<VectorVocabulary<QualifiedNameEntry>*>(_pElementVocabulary)->truncate(elementNames);
	static_cast<VectorVocabulary<QualifiedNameEntry>*>(_pAttributeVocabulary)->truncate(attributeNames);
	return true;
}


template <class StringTable, class NameTable>
void DocumentVocabulary::create()
	/// _vocabularies holds the two null entries and has room for all tables,
	/// so that no appended table can be lost.
{
	_pElementVocabulary = new NameTable(NAME_CAPACITY);
	_pAttributeVocabulary = new NameTable(NAME_CAPACITY);
	_vocabularies.push_back(new StringTable(PREFIX_CAPACITY));
	_vocabularies.push_back(new StringTable(NAMESPACE_NAME_CAPACITY));
	_vocabularies.push_back(new StringTable(LOCAL_NAME_CAPACITY));
	_vocabularies.push_back(new StringTable(OTHER_NCNAME_CAPACITY));
	_vocabularies.push_back(new StringTable(OTHER_URI_CAPACITY));
	_vocabularies.push_back(new StringTable(ATTRIBUTE_VALUE_CAPACITY));
	_vocabularies.push_back(new StringTable(OTHER_STRING_CAPACITY));
	_vocabularies.push_back(new StringTable(CHARACTER_CHUNK_CAPACITY));
}


void DocumentVocabulary::init()
{
	bool found;
	const unsigned int xmlPrefix = table(PREFIX)->index(XML_PREFIX, found);
	poco_assert(xmlPrefix == 1);
	const unsigned int xmlNamespace = table(NAMESPACE_NAME)->index(XML_NAMESPACE, found);
	poco_assert(xmlNamespace == 1);
}


void DocumentVocabulary::clear()
{
	++_revision;
	_vectorTables = false;
	for (Vocabulary<std::string>* pTable: _vocabularies) delete pTable;
	_vocabularies.clear();
	delete _pElementVocabulary;
	_pElementVocabulary = 0;
	delete _pAttributeVocabulary;
	_pAttributeVocabulary = 0;
}


void DocumentVocabulary::copy(const DocumentVocabulary& other)
{
	if (&other == this) return;
	// Meant for a vocabulary without tables; tables that are there are
	// dropped rather than leaked.
	clear();
	_uri = other._uri;
	_impl = other._impl;
	_vocabularies.reserve(other._vocabularies.size());
	for (const Vocabulary<std::string>* pTable: other._vocabularies)
	{
		_vocabularies.push_back(pTable ? pTable->clone() : 0);
	}
	_alphabets = other._alphabets;
	_encodings = other._encodings;
	if (other._pElementVocabulary) _pElementVocabulary = other._pElementVocabulary->clone();
	if (other._pAttributeVocabulary) _pAttributeVocabulary = other._pAttributeVocabulary->clone();
	// Clones are tables of the same kind.
	_vectorTables = other._vectorTables;
}


DocumentVocabulary DocumentVocabulary::operator - (const DocumentVocabulary& doc) const
{
	DocumentVocabulary result((DontInitialize()));
	result._impl = _impl;
	result._vocabularies.reserve(_vocabularies.size());
	std::vector<Vocabulary<std::string>*>::const_iterator itDoc = doc._vocabularies.begin();
	for (std::vector<Vocabulary<std::string>*>::const_iterator it = _vocabularies.begin(); it != _vocabularies.end(); ++it, ++itDoc)
	{
		poco_assert(itDoc != doc._vocabularies.end());
		result._vocabularies.push_back(difference(*it, *itDoc));
	}
	result._alphabets = _alphabets - doc._alphabets;
	result._pElementVocabulary = difference<QualifiedNameEntry>(_pElementVocabulary, doc._pElementVocabulary);
	result._pAttributeVocabulary = difference<QualifiedNameEntry>(_pAttributeVocabulary, doc._pAttributeVocabulary);
	return result;
}


} } // namespace Ixor::FastInfoset
