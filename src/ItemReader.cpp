#include "ItemReader.h"
#include "AlgorithmTable.h"
#include "Ixor/FastInfoset/CDataEncoding.h"
#include "Ixor/FastInfoset/NullEncoding.h"
#include "Ixor/FastInfoset/NullRefEncoding.h"
#include "Ixor/FastInfoset/StringDecoder.h"
#include "Poco/NumberFormatter.h"
#include <limits>


namespace Ixor {
namespace FastInfoset {


namespace
{
	const std::size_t SCRATCH_SIZE = 1024;
	const unsigned int ABSENT = 0xFFFFFFFF;

	// Strings of attribute values copied longer than this are released
	// after the element is reported, so that what the reader holds stays
	// small.
	const std::size_t RETAINED_ATTRIBUTE_OCTETS = 256;

	// The octets of a name that a report may deliver without counting
	// against amplification: real names are shorter.
	const std::size_t NAME_ALLOWANCE = 64;

	// Qualified names kept in their entries: a constant plus this many
	// octets for each octet read; each kept name also costs its bookkeeping.
	const UInt64 QNAME_BUDGET = 64 * 1024;
	const UInt64 QNAME_BUDGET_PER_OCTET = 2;
	const UInt64 QNAME_OVERHEAD = 64;

	const char* const TABLE_NAMES[] =
	{
		"restricted alphabet", "encoding algorithm", "prefix", "namespace name", "local name", "other NCName",
		"other URI", "attribute value", "other string", "content character chunk", "element name", "attribute name"
	};
}


const std::string ItemReader::EMPTY;


ItemReader::NameEntry::NameEntry():
	pQName(0),
	excess(0),
	resolved(false)
{
	name.pPrefix = name.pUri = name.pLocalName = 0;
}


ItemReader::ItemReader(DocumentVocabulary::VocabularyImpl impl):
	ItemReader(DocumentVocabulary(impl))
{
}


ItemReader::ItemReader(const DocumentVocabulary& vocabulary):
	_vocabulary(vocabulary),
	_alphabets(vocabulary.restrictedAlphabets()),
	_pRestoredBase(0),
	_restoredRevision(0),
	_inputInMemory(false),
	_pReader(0),
	_documentSize(0),
	_pLiteralValue(new NullEncoding()),
	_pIndexedValue(new NullRefEncoding(EMPTY)),
	_attributeCount(0),
	_longAttributes(false),
	_delivered(0),
	_nextCheck(0),
	_qnameOctets(0),
	_appendOnly()
{
	_limits.maxElementDepth = std::numeric_limits<std::size_t>::max();
	_limits.maxNamespaceDeclarations = std::numeric_limits<std::size_t>::max();
	_limits.amplificationThreshold = std::numeric_limits<UInt64>::max();
	_limits.maxAmplification = 0;
	_namespaceDeclarations.reserve(16);
	_attributes.reserve(16);
	_xmlDeclaration.reserve(SCRATCH_SIZE);
	_identifying.reserve(SCRATCH_SIZE);
	_octets.reserve(SCRATCH_SIZE);
}


ItemReader::~ItemReader()
{
}


void ItemReader::setLimits(const Limits& limits)
{
	_limits = limits;
}


void ItemReader::begin(BitStreamReader& r, bool inputInMemory)
{
	_pReader = &r;
	_inputInMemory = inputInMemory;
	_delivered = 0;
	_nextCheck = _limits.amplificationThreshold;
	_openElements.clear();
	_declarationScopes.clear();
	_namespaceDeclarations.clear();
	_attributeCount = 0;
	// A reset keeps the alphabets, so those that the previous document added
	// would shift the indexes of this document's own: every document starts
	// from the alphabets the reader was built with.
	_vocabulary.restrictedAlphabets().restore(_alphabets);
}


void ItemReader::restore(const DocumentVocabulary& base)
	/// The revision stays the same as long as nothing replaces or resets the
	/// tables, and the tables only grow while it does.
{
	const bool extended = _pRestoredBase == &base && _restoredRevision == _vocabulary.revision();
	if (!extended || !_vocabulary.truncate(base)) _vocabulary = base;
	_pRestoredBase = &base;
	_restoredRevision = _vocabulary.revision();
}


std::string ItemReader::located(BitStreamReader& r, const std::string& message)
{
	return message + " (at octet " + Poco::NumberFormatter::format(static_cast<UInt64>(r.offset())) + ")";
}


void ItemReader::noEntry(int table, unsigned int index)
{
	throw FISEncodingException(std::string("Index ") + Poco::NumberFormatter::format(index)
		+ " names no entry of the " + TABLE_NAMES[table] + " table");
}


void ItemReader::record(Coding* pCoding, Coding::Form form, DocumentVocabulary::ID table, unsigned int index, UInt64 startBit, const BitStreamReader& r)
{
	pCoding->form = form;
	pCoding->table = table;
	pCoding->index = index;
	pCoding->bits = bitOffset(r) - startBit;
}


//
// Names and strings
//
const ItemReader::NameEntry& ItemReader::readQualifiedName(BitStreamReader& r, bool element, NameCoding* pCoding)
{
	const UInt64 start = pCoding ? bitOffset(r) : 0;
	const DocumentVocabulary::ID table = element ? DocumentVocabulary::ELEMENT_NAME : DocumentVocabulary::ATTRIBUTE_NAME;
	const int pos = r.bitPos();
	if (pos != 1 && pos != 2) throw FISEncodingException("Illegal startposition for a parseQualifiedNameOrIndex value");
	int available = 0;
	const UInt64 window = r.window(available, 4);
	if (available < 4) throw FISParseException("Unexpected end of stream while parsing qualified name or index");
	if ((window >> 60) != 15)
	{
		unsigned int index = 0;
		int size = 0;
		if (FastDecoding::integerAt(pos, window, available, index, size)) r.advance(size);
		else Decoder::integer(r, index);
		const NameEntry& name = nameAt(index, element);
		if (pCoding) record(&pCoding->name, Coding::INDEXED, table, index, start, r);
		return name;
	}

	r.skip(pos == 1 ? 5 : 4);
	bool prefixPresent = false;
	bool namespacePresent = false;
	FastDecoding::twoFlags(r, prefixPresent, namespacePresent, "Unexpected end of stream while parsing qualified name");
	unsigned int prefixIndex = 0;
	unsigned int namespaceIndex = 0;
	unsigned int localIndex = 0;
	ResolvedName name;
	name.pPrefix = prefixPresent ? readIdentifying(r, DocumentVocabulary::PREFIX, prefixIndex, pCoding ? &pCoding->prefix : 0) : &EMPTY;
	name.pUri = namespacePresent ? readIdentifying(r, DocumentVocabulary::NAMESPACE_NAME, namespaceIndex, pCoding ? &pCoding->namespaceName : 0) : &EMPTY;
	name.pLocalName = readIdentifying(r, DocumentVocabulary::LOCAL_NAME, localIndex, pCoding ? &pCoding->localName : 0);
	bool found = false;
	const unsigned int index = nameTable(element).index(QualifiedNameEntry(prefixIndex, namespaceIndex, localIndex), found);
	if (pCoding)
	{
		record(&pCoding->name, Coding::LITERAL, table, index, start, r);
		pCoding->name.added = true;
	}
	return addName(index, name, element);
}


const std::string* ItemReader::readIdentifying(BitStreamReader& r, DocumentVocabulary::ID id, unsigned int& index, Coding* pCoding)
{
	const UInt64 start = pCoding ? bitOffset(r) : 0;
	if (r.bitPos() != 0) throw FISEncodingException("Illegal startposition for an parseIdentifyingStringOrIndex");
	bool isIndex = false;
	if (!r.read(isIndex)) throw FISParseException("Unexpected end of stream while parsing identifying string or index");
	const std::string* pText = 0;
	if (isIndex)
	{
		Decoder::integer(r, index);
		pText = &deliveredAt(id, index);
	}
	else
	{
		Decoder::nonEmptyOctetString(r, _identifying);
		index = addString(id, _identifying);
		pText = &stringAt(id, index);
	}
	if (pCoding)
	{
		record(pCoding, isIndex ? Coding::INDEXED : Coding::LITERAL, id, index, start, r);
		pCoding->added = !isIndex;
		pCoding->encoding = DocumentVocabulary::UTF8;
	}
	return pText;
}


const std::string* ItemReader::readIdentifying(BitStreamReader& r, DocumentVocabulary::ID id, Coding* pCoding)
{
	unsigned int index = 0;
	return readIdentifying(r, id, index, pCoding);
}


const std::string* ItemReader::readCondIdentifying(BitStreamReader& r, bool present, DocumentVocabulary::ID id, Coding* pCoding)
{
	return present ? readIdentifying(r, id, pCoding) : &EMPTY;
}


Encoding* ItemReader::readNonIdentifying(BitStreamReader& r, DocumentVocabulary::ID id, bool typed, Coding* pCoding)
	/// A string or index at the first or third bit. The reader of typed
	/// values (character chunks) has end-of-stream messages spelled "whil",
	/// the reader of text (attribute values, comments, instruction data) has
	/// them spelled out; both spellings are kept.
{
	const UInt64 start = pCoding ? bitOffset(r) : 0;
	const int pos = r.bitPos();
	if (pos != 0 && pos != 2) throw FISEncodingException("Illegal startposition for a NonIdentifyingStringOrIndex value");
	bool isIndex = false;
	if (!r.read(isIndex))
	{
		throw FISParseException(typed ? "Unexpected end of stream whil parsing non identifying string or index"
			: "Unexpected end of stream while parsing non identifying string or index");
	}
	if (isIndex)
	{
		unsigned int index = 0;
		Decoder::integer(r, index);
		_pIndexedValue->reset(deliveredAt(id, index));
		if (pCoding) record(pCoding, Coding::INDEXED, id, index, start, r);
		return _pIndexedValue;
	}
	const char* const endMessage = typed ? "Unexpected end of stream whil parsing encoded character string"
		: "Unexpected end of stream while parsing encoded character string";
	bool addToTable = false;
	if (!r.read(addToTable)) throw FISParseException(endMessage);
	Encoding* pValue = readEncoded(r, _pLiteralValue->content(), endMessage, pCoding);
	if (!pValue) pValue = _pLiteralValue;
	const unsigned int index = addToTable ? addString(id, pValue->content()) : 0;
	if (pCoding)
	{
		record(pCoding, Coding::LITERAL, id, index, start, r);
		pCoding->added = addToTable;
	}
	return pValue;
}


const std::string& ItemReader::readNonIdentifyingText(BitStreamReader& r, DocumentVocabulary::ID id, Coding* pCoding)
{
	// Through the const interface: a value given by index refuses the other.
	const Encoding* pValue = readNonIdentifying(r, id, false, pCoding);
	return pValue->content();
}


Encoding* ItemReader::readEncoded(BitStreamReader& r, std::string& text, const char* endMessage, Coding* pCoding)
	/// An encoded character string at the third or fifth bit. The characters
	/// of UTF-8, UTF-16 and restricted-alphabet strings go to text, and null
	/// is returned; the value of an encoding algorithm is returned.
{
	const int pos = r.bitPos();
	if (pos != 2 && pos != 4) throw FISEncodingException("Illegal startposition for an encodedCharacterString");
	unsigned char encoding = 0;
	if (!r.read(encoding, 2)) throw FISParseException(endMessage);
	unsigned int number = 0;
	Encoding* pValue = 0;
	switch (encoding)
	{
	case DocumentVocabulary::UTF8:
		Decoder::nonEmptyOctetString(r, text);
		break;
	case DocumentVocabulary::UTF16:
		Decoder::nonEmptyOctetString(r, _octets);
		StringDecoder::decodeUTF16(_octets, text);
		break;
	case DocumentVocabulary::RESTRICTEDALPHABET:
	{
		Decoder::integer(r, number);
		const RestrictedAlphabet& alphabet = FastDecoding::alphabetAt(_vocabulary.restrictedAlphabets(), number);
		Decoder::nonEmptyOctetString(r, _octets);
		StringDecoder::decodeAlphabet(_octets, alphabet, text);
		break;
	}
	default:
		poco_assert(encoding == DocumentVocabulary::ENCODINGALGORITHM);
		Decoder::integer(r, number);
		if (number == AlgorithmTable::CDATA)
		{
			// Common in documents converted from XML: its value is reused
			// unless a handler kept the last one.
			// (It is made with a placeholder: its text cannot be empty.)
			if (!_pCData || _pCData->referenceCount() > 1) _pCData = new CDataEncoding(" ");
			CDataEncoding::decode(r, _pCData->content());
			pValue = _pCData;
			break;
		}
		_pTypedValue = _vocabulary.decodings().read(static_cast<int>(number), r);
		pValue = _pTypedValue;
		break;
	}
	if (pCoding)
	{
		pCoding->encoding = encoding;
		pCoding->number = number;
	}
	return pValue;
}


inline void ItemReader::addAttribute(const NameEntry& name, const char* value, std::size_t length, bool inInput)
	/// A value in the input is referred to; any other is copied (the slot
	/// keeps its capacity from element to element).
{
	Attribute& attribute = nextAttribute(name);
	attribute.pValue = 0;
	attribute.length = length;
	if (inInput)
	{
		attribute.pData = value;
		return;
	}
	attribute.copy.assign(value, length);
	attribute.pData = 0;
	if (length > RETAINED_ATTRIBUTE_OCTETS) _longAttributes = true;
}


bool ItemReader::readAttributeValue(BitStreamReader& r, const NameEntry& name, Coding* pCoding)
	/// The common attribute values in one step: an index, or a UTF-8 literal.
	/// Returns false, having read nothing, for what the general path reads.
{
	const UInt64 start = pCoding ? bitOffset(r) : 0;
	int available = 0;
	const UInt64 window = r.window(available, 1);
	unsigned int index = 0;
	int size = 0;
	if (window >> 63)
	{
		if (!FastDecoding::integerAt(1, window << 1, available - 1, index, size)) return false;
		r.advance(1 + size);
		addAttribute(name, deliveredAt(DocumentVocabulary::ATTRIBUTE_VALUE, index));
		if (pCoding) record(pCoding, Coding::INDEXED, DocumentVocabulary::ATTRIBUTE_VALUE, index, start, r);
		return true;
	}
	const char* pData = 0;
	std::size_t length = 0;
	bool view = false;
	if (!readUTF8Literal(r, window, available, 4, pData, length, view)) return false;
	const bool addToTable = ((window >> 62) & 1) != 0;
	if (addToTable)
	{
		// The value now lives in the table: the list refers to it there.
		index = addString(DocumentVocabulary::ATTRIBUTE_VALUE, pData, length);
		addAttribute(name, stringAt(DocumentVocabulary::ATTRIBUTE_VALUE, index));
	}
	// A view into a block in memory stays valid for the whole parse.
	else addAttribute(name, pData, length, view && _inputInMemory);
	if (pCoding)
	{
		record(pCoding, Coding::LITERAL, DocumentVocabulary::ATTRIBUTE_VALUE, index, start, r);
		pCoding->added = addToTable;
		pCoding->encoding = DocumentVocabulary::UTF8;
	}
	return true;
}


void ItemReader::readAttributeValueOf(BitStreamReader& r, const NameEntry& name, Coding* pCoding)
{
	if (readAttributeValue(r, name, pCoding)) return;
	const std::string& value = readNonIdentifyingText(r, DocumentVocabulary::ATTRIBUTE_VALUE, pCoding);
	addAttribute(name, value.data(), value.size(), false);
}


//
// Vocabulary views
//
void ItemReader::checkAmplification()
	/// The octets read only grow, so the limit found here holds until the
	/// count passes it again.
{
	double limit = _limits.maxAmplification * static_cast<double>(_pReader->octetsConsumed());
	if (limit < static_cast<double>(_limits.amplificationThreshold)) limit = static_cast<double>(_limits.amplificationThreshold);
	if (static_cast<double>(_delivered) > limit)
	{
		throw FISParseException("Amplification limit exceeded: " + Poco::NumberFormatter::format(_delivered)
			+ " octets delivered by index from " + Poco::NumberFormatter::format(static_cast<UInt64>(_pReader->octetsConsumed()))
			+ " octets read (FastInfosetParser::setMaxAmplification, setAmplificationThreshold)");
	}
	_nextCheck = limit >= 1.8e19 ? ~UInt64(0) : static_cast<UInt64>(limit);
}


unsigned int ItemReader::addString(DocumentVocabulary::ID id, const std::string& text)
{
	bool found = false;
	Vocabulary<std::string>& table = *_vocabulary.vocabulary(id);
	const unsigned int index = table.index(text, found);
	std::vector<const std::string*>& strings = _strings[id];
	// A vector table appends; a table that finds values may answer an
	// index it had.
	if (index == strings.size()) strings.push_back(&table.index()[index]);
	else syncStrings(id);
	return index;
}


unsigned int ItemReader::addString(DocumentVocabulary::ID id, const char* pData, std::size_t length)
	/// An append-only table takes the literal from the input as it stands;
	/// the others look it up as a string.
{
	VectorVocabulary<std::string>* pTable = _appendOnly[id];
	if (!pTable)
	{
		_identifying.assign(pData, length);
		return addString(id, _identifying);
	}
	std::vector<const std::string*>& strings = _strings[id];
	strings.push_back(&pTable->append(pData, length));
	return static_cast<unsigned int>(strings.size() - 1);
}


void ItemReader::syncStrings(DocumentVocabulary::ID id)
{
	// Every kind of table keeps its entries in its index, in index order.
	const VerbTable<std::string>& entries = _vocabulary.vocabulary(id)->index();
	std::vector<const std::string*>& strings = _strings[id];
	for (std::size_t i = strings.size(), size = entries.size(); i < size; ++i) strings.push_back(&entries[i]);
}


void ItemReader::syncTables()
	/// Rebuilds the views after the header has reset or filled the
	/// vocabulary. Names are resolved on first use only: a name of an
	/// initial vocabulary that no element uses never has to resolve.
{
	for (int id = DocumentVocabulary::PREFIX; id <= DocumentVocabulary::CONTENT_CHARACTER_CHUNK; ++id)
	{
		_strings[id].clear();
		syncStrings(static_cast<DocumentVocabulary::ID>(id));
		_appendOnly[id] = dynamic_cast<VectorVocabulary<std::string>*>(_vocabulary.vocabulary(static_cast<DocumentVocabulary::ID>(id)));
	}
	for (int element = 0; element < 2; ++element)
	{
		_names[element].truncate(0);
		_usedNames[element].clear();
		growNames(element != 0);
	}
	_qnameOctets = 0;
}


const ItemReader::NameEntry& ItemReader::resolveName(unsigned int index, bool element)
{
	const Vocabulary<QualifiedNameEntry>& table = nameTable(element);
	if (index >= table.size()) noEntry(element ? DocumentVocabulary::ELEMENT_NAME : DocumentVocabulary::ATTRIBUTE_NAME, index);
	const QualifiedNameEntry& entry = table.value(index);
	ResolvedName name;
	name.pPrefix = &resolve(DocumentVocabulary::PREFIX, entry.prefixId());
	name.pUri = &resolve(DocumentVocabulary::NAMESPACE_NAME, entry.namespaceId());
	name.pLocalName = &resolve(DocumentVocabulary::LOCAL_NAME, entry.localNameId());
	NameEntry& resolved = nameSlot(index, element);
	setName(resolved, name);
	_usedNames[element][index] = &resolved;
	return resolved;
}


const ItemReader::NameEntry& ItemReader::addName(unsigned int index, const ResolvedName& name, bool element)
{
	NameEntry& added = nameSlot(index, element);
	if (!added.resolved)
	{
		setName(added, name);
		_usedNames[element][index] = &added;
	}
	return added;
}


ItemReader::NameEntry& ItemReader::nameSlot(unsigned int index, bool element)
{
	VerbTable<NameEntry>& names = _names[element];
	if (names.size() <= index) growNames(element);
	return names[index];
}


void ItemReader::growNames(bool element)
	/// One entry for each name of the table, unresolved. The entries are
	/// reused from earlier documents, their qualified names' storage with
	/// them.
{
	VerbTable<NameEntry>& names = _names[element];
	std::vector<const NameEntry*>& used = _usedNames[element];
	for (std::size_t i = names.size(), size = nameTable(element).size(); i < size; ++i)
	{
		names.extend().resolved = false;
		used.push_back(0);
	}
}


void ItemReader::setName(NameEntry& entry, const ResolvedName& name)
{
	entry.name = name;
	// An unprefixed name is reported under its local name; a prefixed one
	// gets its "prefix:local" when first reported.
	entry.pQName = name.pPrefix->empty() ? name.pLocalName : 0;
	const std::size_t size = name.pPrefix->size() + name.pUri->size() + name.pLocalName->size();
	// Reported twice: by startElement() and endElement(), or by the element
	// and its copy in the attribute list.
	entry.excess = size > NAME_ALLOWANCE ? 2 * (size - NAME_ALLOWANCE) : 0;
	entry.resolved = true;
}


const std::string& ItemReader::resolve(DocumentVocabulary::ID id, unsigned int index) const
{
	// A name from an initial vocabulary marks an absent prefix or namespace
	// with all bits set; it stands for no prefix or namespace, which the
	// tables cannot look up.
	if (index == ABSENT) return EMPTY;
	return stringAt(id, index);
}


Vocabulary<QualifiedNameEntry>& ItemReader::nameTable(bool element)
{
	return element ? *_vocabulary.elementVocabulary() : *_vocabulary.attributeVocabulary();
}


const std::string& ItemReader::buildQualifiedName(const NameEntry& name)
	/// "prefix:local", kept in the entry while the kept ones stay within
	/// their budget; past it, built afresh for each report.
{
	const UInt64 size = name.name.pPrefix->size() + 1 + name.name.pLocalName->size();
	const UInt64 budget = QNAME_BUDGET + QNAME_BUDGET_PER_OCTET * _pReader->octetsConsumed();
	if (_qnameOctets + size + QNAME_OVERHEAD <= budget)
	{
		name.qname.assign(*name.name.pPrefix).append(1, ':').append(*name.name.pLocalName);
		_qnameOctets += size + QNAME_OVERHEAD;
		name.pQName = &name.qname;
		return name.qname;
	}
	deliver(size);
	_qnameScratch.assign(*name.name.pPrefix).append(1, ':').append(*name.name.pLocalName);
	return _qnameScratch;
}


//
// Attributes
//
void ItemReader::releaseAttributeCopies()
{
	for (Attribute& attribute: _attributes)
	{
		if (attribute.copy.capacity() > RETAINED_ATTRIBUTE_OCTETS) std::string().swap(attribute.copy);
	}
	_longAttributes = false;
}


} } // namespace Ixor::FastInfoset
