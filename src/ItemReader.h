//
// ItemReader.h
//
// Library: FastInfoset
// Module:  ItemReader
//
// The one reader of a document's structure. Internal: this header is not
// installed; fitool links the reader through an object library.
//


#ifndef FastInfoset_ItemReader_INCLUDED
#define FastInfoset_ItemReader_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/CDataEncoding.h"
#include "Ixor/FastInfoset/Decoder.h"
#include "Ixor/FastInfoset/DocumentRestrictedAlphabet.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "Ixor/FastInfoset/Encoding.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/VectorVocabulary.h"
#include "FastDecoding.h"
#include "HeaderListener.h"
#include <cstddef>
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {


class NullEncoding;
class NullRefEncoding;


class ItemReader
	/// Walks one Fast Infoset document and hands its items, in document
	/// order, to a sink: the header's XML declaration, vocabulary, notations
	/// and unparsed entities, then namespace declarations, the start of each
	/// element with its attributes, character chunks, comments, processing
	/// instructions, document type declarations, the end of each element.
	/// FastInfosetParser is this reader and a sink that calls the SAX
	/// handlers; fitool's dump is this reader and a sink that lists.
	///
	/// The reader keeps the document's vocabulary, resolves names and
	/// strings given by index, and enforces the limits for documents from
	/// strangers (depth, namespace declarations, amplification). Strings it
	/// hands out are valid until the next item.
	///
	/// A sink is a class with these members, called inline:
	///
	///   static constexpr bool DETAILED: whether the reader also tells where
	///     each item starts and how its names and strings were coded, through
	///     the note...() members below; a sink that does not ask pays nothing.
	///   bool inHandler() const: whether the exception in flight is the
	///     sink's own (it then passes unchanged).
	///   void fatalError(const std::string& message): bad input, before the
	///     exception with that message is thrown.
	///   void xmlDeclaration(const std::string& text): "" for none.
	///   void vocabularyRead(const DocumentVocabulary& vocabulary)
	///   void notation(const std::string& name, const std::string* pPublicId, const std::string* pSystemId)
	///   void unparsedEntity(const std::string& name, const std::string* pPublicId,
	///     const std::string& systemId, const std::string& notationName)
	///   void startDocument()
	///   void startPrefixMapping(const std::string& prefix, const std::string& uri)
	///   void startElement(const NameEntry& element): attributes() and
	///     attributeCount() hold the element's attributes.
	///   void endElement(const NameEntry& element)
	///   void endPrefixMapping(const std::string& prefix)
	///   void characters(const char* pData, std::size_t length): a chunk of
	///     plain text.
	///   void value(Encoding& value): any other chunk (an encoding
	///     algorithm's value, or text the general path read).
	///   void comment(const std::string& text)
	///   void processingInstruction(const std::string& target, const std::string& data)
	///   void startDTD(const std::string& publicId, const std::string& systemId)
	///   void endDTD()
	///   void endDocument()
	///
	/// and, when DETAILED, each called just before the item's own member:
	///
	///   noteNamespace(UInt64 octet, const Coding& prefix, const Coding& uri)
	///   noteAttribute(UInt64 octet, const NameCoding& name, const Coding& value)
	///   noteElement(UInt64 octet, const NameCoding& name)
	///   noteChunk(UInt64 octet, const Coding& value)
	///   noteComment(UInt64 octet, const Coding& text)
	///   noteProcessingInstruction(UInt64 octet, const Coding& target, const Coding& data)
	///   noteDocumentType(UInt64 octet, const Coding& systemId, const Coding& publicId)
	///   noteNotation(UInt64 octet, const Coding& name, const Coding& systemId, const Coding& publicId)
	///   noteUnparsedEntity(UInt64 octet, const Coding& name, const Coding& systemId,
	///     const Coding& publicId, const Coding& notationName)
	///   entityReference(UInt64 octet, const std::string& name, const std::string& systemId,
	///     const std::string& publicId, const Coding codings[3]): name, system, public.
	///   characterEncodingScheme(const std::string& name), standalone(bool standalone),
	///   version(const std::string& version, const Coding& coding): the
	///     components that are read and reported to nobody.
	///   noteEnd(UInt64 octet): the document's terminator.
	///
	/// Offsets are those of the octet that holds the item's first bit (an
	/// attribute's: its name's first bit).
	///
	/// Bad input raises FISParseException, FISEncodingException or
	/// FISException, and nothing else, with " (at octet N)" after the
	/// message, N the offset of the octet where the fault was found.
{
public:
	struct Limits
		/// What the reader accepts of a document from a stranger.
	{
		std::size_t  maxElementDepth;
		std::size_t  maxNamespaceDeclarations;
		Ixor::UInt64 amplificationThreshold;
		double       maxAmplification;
	};

	struct ResolvedName
		/// The names of one element or attribute, pointing into the
		/// vocabulary or at an empty string.
	{
		const std::string* pPrefix;
		const std::string* pUri;
		const std::string* pLocalName;
	};

	struct NameEntry
		/// A qualified name of the element-name or attribute-name table,
		/// resolved to its strings once.
	{
		NameEntry();

		ResolvedName       name;
		mutable const std::string* pQName;  // "prefix:local" or the local name; null until first needed
		mutable std::string qname;   // "prefix:local", once built
		UInt64             excess;   // octets counted against amplification per report
		bool               resolved;
	};

	struct Attribute
		/// One attribute of the element being read: its name and its value,
		/// in a vocabulary table, in the input or in the copy.
	{
		const NameEntry*   pName;
		const std::string* pValue;   // the value in a table, or null
		const char*        pData;    // the value in the input, or null: the copy
		std::size_t        length;
		std::string        copy;
	};

	struct Coding
		/// How one string or qualified name was coded, for sinks that list
		/// documents.
	{
		enum Form
		{
			ABSENT,
			INDEXED,
			LITERAL
		};

		Form                   form;
		DocumentVocabulary::ID table;
		unsigned int           index;     // where it is; a literal's, when it went into the table
		bool                   added;     // a literal that went into the table
		unsigned int           encoding;  // a literal string's DocumentVocabulary encoding
		unsigned int           number;    // its restricted alphabet's or encoding algorithm's index
		UInt64                 bits;      // the bits it took
	};

	struct NameCoding
		/// How a qualified name was coded: by index into its table, or
		/// literally from three strings.
	{
		Coding name;
		Coding prefix;
		Coding namespaceName;
		Coding localName;
	};

	static const std::string EMPTY;

	explicit ItemReader(DocumentVocabulary::VocabularyImpl impl);
	explicit ItemReader(const DocumentVocabulary& vocabulary);
	~ItemReader();

	ItemReader(const ItemReader&) = delete;
	ItemReader& operator = (const ItemReader&) = delete;

	void setLimits(const Limits& limits);

	template <class Sink>
	void read(BitStreamReader& r, bool inputInMemory, Sink& sink, HeaderListener& listener);
		/// Reads one document from r, which stands at its first octet, up to
		/// its last octet. inputInMemory tells that r reads a block that
		/// stays valid for the whole read. The listener supplies external
		/// vocabularies (and learns what the header held).

	const DocumentVocabulary& vocabulary() const;
		/// The vocabulary as the last document left it.

	void restore(const DocumentVocabulary& base);
		/// Makes the vocabulary equal to base, which stays valid and
		/// unchanged while the reader lives: when it was restored to base
		/// before and documents have only added to it since, by dropping
		/// what they added, which costs next to nothing; else by copying.

	Ixor::UInt64 documentSize() const;
		/// The octets of the document once its last octet is read.

	const Attribute* attributes() const;
	std::size_t attributeCount() const;
		/// The attributes of the element being started.

	const std::string& qualifiedName(const NameEntry& name);
		/// "prefix:local", or the local name of a name without prefix.

	static UInt64 bitOffset(const BitStreamReader& r);

private:
	struct DeclarationScope
		/// The namespace declarations of an open element that has some.
	{
		std::size_t depth;   // the element's place in _openElements
		std::size_t first;   // its first declaration in _namespaceDeclarations
	};

	struct NamespaceDeclaration
	{
		const std::string* pPrefix;
		const std::string* pURI;
	};

	// The walk: it hands items to the sink.
	template <class Sink> void readDocument(BitStreamReader& r, Sink& sink, HeaderListener& listener);
	template <class Sink> void readHeaderParts(BitStreamReader& r, const Decoder::OpenHeaderParts& parts, Sink& sink);
	template <class ReadItem> void readDeclarations(BitStreamReader& r, int idBits, unsigned int itemId,
		unsigned int terminator, const char* endMessage, const char* terminatorMessage, ReadItem readItem);
	template <class Sink> void readNotation(BitStreamReader& r, Sink& sink);
	template <class Sink> void readUnparsedEntity(BitStreamReader& r, Sink& sink);
	template <class Sink> void readChildren(BitStreamReader& r, Sink& sink);
	template <class Sink> void readChild(BitStreamReader& r, Sink& sink);
	template <class Sink> bool readElementFast(BitStreamReader& r, UInt64 window, int available, Sink& sink);
	template <class Sink> void readElement(BitStreamReader& r, Sink& sink);
	template <class Sink> void readNamespaceAttribute(BitStreamReader& r, Sink& sink);
	template <class Sink> void readAttributes(BitStreamReader& r, Sink& sink);
	template <class Sink> void startElement(const NameEntry& element, Sink& sink);
	template <class Sink> void endElement(const NameEntry& element, Sink& sink);
	template <class Sink> bool readCharacterChunkFast(BitStreamReader& r, UInt64 window, int available, Sink& sink);
	template <class Sink> void readCharacterChunk(BitStreamReader& r, Sink& sink);
	template <class Sink> void indexedChunk(UInt64 octet, unsigned int index, int size, Sink& sink);
	template <class Sink> void readComment(BitStreamReader& r, Sink& sink);
	template <class Sink> void readProcessingInstruction(BitStreamReader& r, UInt64 octet, Sink& sink);
	template <class Sink> void readDocumentTypeDeclaration(BitStreamReader& r, Sink& sink);
	template <class Sink> void readEntityReference(BitStreamReader& r, Sink& sink);
	template <class E, class Sink> [[noreturn]] void fail(BitStreamReader& r, const Ixor::Exception& exc, Sink& sink);
	template <class Sink> static Coding* wanted(Coding& coding);
	template <class Sink> static NameCoding* wanted(NameCoding& coding);

	// Names and strings: what needs no sink.
	void begin(BitStreamReader& r, bool inputInMemory);
	const NameEntry& readQualifiedName(BitStreamReader& r, bool element, NameCoding* pCoding);
	const std::string* readIdentifying(BitStreamReader& r, DocumentVocabulary::ID id, unsigned int& index, Coding* pCoding);
	const std::string* readIdentifying(BitStreamReader& r, DocumentVocabulary::ID id, Coding* pCoding);
	const std::string* readCondIdentifying(BitStreamReader& r, bool present, DocumentVocabulary::ID id, Coding* pCoding);
	Encoding* readNonIdentifying(BitStreamReader& r, DocumentVocabulary::ID id, bool typed, Coding* pCoding);
	const std::string& readNonIdentifyingText(BitStreamReader& r, DocumentVocabulary::ID id, Coding* pCoding);
	Encoding* readEncoded(BitStreamReader& r, std::string& text, const char* endMessage, Coding* pCoding);
	bool readAttributeValue(BitStreamReader& r, const NameEntry& name, Coding* pCoding);
	void readAttributeValueOf(BitStreamReader& r, const NameEntry& name, Coding* pCoding);
	bool readUTF8Literal(BitStreamReader& r, UInt64 window, int available, int lengthPos, const char*& pData, std::size_t& length, bool& view);

	// Vocabulary views
	void deliver(UInt64 octets);
	const std::string& stringAt(DocumentVocabulary::ID id, unsigned int index) const;
	const std::string& deliveredAt(DocumentVocabulary::ID id, unsigned int index);
	void checkAmplification();
	unsigned int addString(DocumentVocabulary::ID id, const std::string& text);
	unsigned int addString(DocumentVocabulary::ID id, const char* pData, std::size_t length);
	void syncStrings(DocumentVocabulary::ID id);
	void syncTables();
	const NameEntry* usedName(unsigned int index, bool element) const;
	const NameEntry& nameAt(unsigned int index, bool element);
	const NameEntry& resolveName(unsigned int index, bool element);
	const NameEntry& addName(unsigned int index, const ResolvedName& name, bool element);
	NameEntry& nameSlot(unsigned int index, bool element);
	void growNames(bool element);
	void setName(NameEntry& entry, const ResolvedName& name);
	const std::string& resolve(DocumentVocabulary::ID id, unsigned int index) const;
	Vocabulary<QualifiedNameEntry>& nameTable(bool element);
	const std::string& buildQualifiedName(const NameEntry& name);

	// Attributes
	Attribute& nextAttribute(const NameEntry& name);
	void addAttribute(const NameEntry& name, const std::string& value);
	void addAttribute(const NameEntry& name, const char* value, std::size_t length, bool inInput);
	void releaseAttributeCopies();

	static std::string located(BitStreamReader& r, const std::string& message);
	[[noreturn]] static void noEntry(int table, unsigned int index);
	static Coding indexed(DocumentVocabulary::ID table, unsigned int index, UInt64 bits);
	static void record(Coding* pCoding, Coding::Form form, DocumentVocabulary::ID table, unsigned int index, UInt64 startBit, const BitStreamReader& r);

	DocumentVocabulary                _vocabulary;
	DocumentRestrictedAlphabet        _alphabets;   // those the reader was built with
	const DocumentVocabulary*         _pRestoredBase;   // what restore() last made the vocabulary
	UInt64                            _restoredRevision;   // the vocabulary's revision then
	Limits                            _limits;
	bool                              _inputInMemory;
	BitStreamReader*                  _pReader;
	UInt64                            _documentSize;
	std::string                       _xmlDeclaration;
	std::string                       _identifying;
	std::string                       _octets;
	std::string                       _qnameScratch;
	Ixor::AutoPtr<NullEncoding>       _pLiteralValue;
	Ixor::AutoPtr<NullRefEncoding>    _pIndexedValue;
	Ixor::AutoPtr<Encoding>           _pTypedValue;
	Ixor::AutoPtr<CDataEncoding>      _pCData;
	std::vector<const NameEntry*>     _openElements;
	std::vector<DeclarationScope>     _declarationScopes;
	std::vector<NamespaceDeclaration> _namespaceDeclarations;

	// The attributes of the element being read.
	std::vector<Attribute>            _attributes;
	std::size_t                       _attributeCount;
	bool                              _longAttributes;

	// Amplification: octets delivered by index, and the count at which the
	// limits are looked at again.
	UInt64                            _delivered;
	UInt64                            _nextCheck;

	// Qualified names "prefix:local" are built into their name entries when
	// first reported. Their octets are held to a budget in proportion to
	// the input; past it they are built for each report instead, and
	// counted as delivered.
	UInt64                            _qnameOctets;

	// Direct views of the vocabulary's tables, by table identifier and
	// index, kept in step with every entry the reader adds: lookups by index
	// cost one array access instead of virtual calls through the tables.
	std::vector<const std::string*>   _strings[DocumentVocabulary::CONTENT_CHARACTER_CHUNK + 1];
	VectorVocabulary<std::string>*    _appendOnly[DocumentVocabulary::CONTENT_CHARACTER_CHUNK + 1];   // the tables that are, or null
	// The names of the element-name and attribute-name tables, by index.
	// Entries stay in place, and their storage from document to document.
	VerbTable<NameEntry>              _names[2];
	std::vector<const NameEntry*>     _usedNames[2];   // the resolved ones by index, else null: one access per name
};


//
// inlines
//
inline const DocumentVocabulary& ItemReader::vocabulary() const
{
	return _vocabulary;
}


inline Ixor::UInt64 ItemReader::documentSize() const
{
	return _documentSize;
}


inline const ItemReader::Attribute* ItemReader::attributes() const
{
	return _attributes.data();
}


inline std::size_t ItemReader::attributeCount() const
{
	return _attributeCount;
}


inline ItemReader::Coding ItemReader::indexed(DocumentVocabulary::ID table, unsigned int index, UInt64 bits)
{
	Coding coding;
	coding.form = Coding::INDEXED;
	coding.table = table;
	coding.index = index;
	coding.bits = bits;
	return coding;
}


inline UInt64 ItemReader::bitOffset(const BitStreamReader& r)
{
	return static_cast<UInt64>(r.octetsConsumed()) * 8 + static_cast<UInt64>(r.bitPos());
}


inline const std::string& ItemReader::stringAt(DocumentVocabulary::ID id, unsigned int index) const
{
	const std::vector<const std::string*>& strings = _strings[id];
	if (index >= strings.size()) noEntry(id, index);
	return *strings[index];
}


inline void ItemReader::deliver(UInt64 octets)
{
	_delivered += octets;
	if (_delivered > _nextCheck) checkAmplification();
}


inline const std::string& ItemReader::deliveredAt(DocumentVocabulary::ID id, unsigned int index)
	/// A string taken from a table to be reported: it counts as delivered.
{
	const std::string& text = stringAt(id, index);
	deliver(text.size());
	return text;
}


inline const ItemReader::NameEntry* ItemReader::usedName(unsigned int index, bool element) const
	/// The name at index when it has been resolved already, else null.
{
	const std::vector<const NameEntry*>& used = _usedNames[element];
	return index < used.size() ? used[index] : 0;
}


inline const ItemReader::NameEntry& ItemReader::nameAt(unsigned int index, bool element)
{
	const NameEntry* pName = usedName(index, element);
	return pName ? *pName : resolveName(index, element);
}


inline const std::string& ItemReader::qualifiedName(const NameEntry& name)
{
	if (name.pQName) return *name.pQName;
	return buildQualifiedName(name);
}


inline ItemReader::Attribute& ItemReader::nextAttribute(const NameEntry& name)
{
	if (name.excess) deliver(name.excess);
	if (_attributeCount == _attributes.size()) _attributes.emplace_back();
	Attribute& attribute = _attributes[_attributeCount++];
	attribute.pName = &name;
	return attribute;
}


inline void ItemReader::addAttribute(const NameEntry& name, const std::string& value)
	/// value is a vocabulary entry.
{
	Attribute& attribute = nextAttribute(name);
	attribute.pValue = &value;
	attribute.pData = value.data();
	attribute.length = value.size();
}


inline bool ItemReader::readUTF8Literal(BitStreamReader& r, UInt64 window, int available, int lengthPos, const char*& pData, std::size_t& length, bool& view)
	/// A literal in UTF-8 with its length at lengthPos, from the window that
	/// begins at its 0 bit: the octets in the input when the reader holds
	/// them whole, else a copy. Returns false, having read nothing, for
	/// every other string.
{
	// 0, the add-to-table bit, 00 for UTF-8, the length.
	int size = 0;
	if (available < 4 || ((window >> 60) & 3) != DocumentVocabulary::UTF8) return false;
	if (!FastDecoding::stringLengthAt(lengthPos, window << 4, available - 4, length, size)) return false;
	r.advance(4 + size);
	view = r.readView(pData, length);
	if (!view)
	{
		r.read(_octets, length);
		pData = _octets.data();
	}
	return true;
}


//
// The walk
//
template <class Sink>
inline ItemReader::Coding* ItemReader::wanted(Coding& coding)
	/// Where the codings go: nowhere, unless the sink lists them.
{
	if constexpr (Sink::DETAILED)
	{
		coding.form = Coding::ABSENT;
		return &coding;
	}
	else return 0;
}


template <class Sink>
inline ItemReader::NameCoding* ItemReader::wanted(NameCoding& coding)
{
	if constexpr (Sink::DETAILED)
	{
		coding.prefix.form = coding.namespaceName.form = coding.localName.form = Coding::ABSENT;
		return &coding;
	}
	else return 0;
}


template <class Sink>
void ItemReader::read(BitStreamReader& r, bool inputInMemory, Sink& sink, HeaderListener& listener)
	/// Faults of the input leave as exceptions of the library's family that
	/// say where they were found; those of the sink pass unchanged.
{
	begin(r, inputInMemory);
	try
	{
		readDocument(r, sink, listener);
	}
	catch (const FISParseException& exc)
	{
		if (sink.inHandler()) throw;
		fail<FISParseException>(r, exc, sink);
	}
	catch (const FISEncodingException& exc)
	{
		if (sink.inHandler()) throw;
		fail<FISEncodingException>(r, exc, sink);
	}
	catch (const FISException& exc)
	{
		if (sink.inHandler()) throw;
		fail<FISException>(r, exc, sink);
	}
	catch (const Ixor::PoolOverflowException& exc)
	{
		// A table of fixed capacity, in a reader built with hash tables.
		if (sink.inHandler()) throw;
		fail<FISException>(r, exc, sink);
	}
}


template <class E, class Sink>
void ItemReader::fail(BitStreamReader& r, const Ixor::Exception& exc, Sink& sink)
{
	const std::string message = located(r, exc.message());
	sink.fatalError(message);
	throw E(message, exc.code());
}


template <class Sink>
void ItemReader::readDocument(BitStreamReader& r, Sink& sink, HeaderListener& listener)
{
	Decoder::documentPreHeader(r, _xmlDeclaration);
	sink.xmlDeclaration(_xmlDeclaration);
	const Decoder::OpenHeaderParts parts = Decoder::documentHeader(r, _vocabulary, 0, &listener);
	syncTables();
	sink.vocabularyRead(_vocabulary);
	readHeaderParts(r, parts, sink);
	sink.startDocument();
	readChildren(r, sink);
	if constexpr (Sink::DETAILED) sink.noteEnd(r.octetsConsumed());
	// The document's terminator, and the padding of its last octet.
	r.skip(4);
	r.skipToByteStart();
	_documentSize = r.octetsConsumed();
	sink.endDocument();
}


template <class Sink>
void ItemReader::readHeaderParts(BitStreamReader& r, const Decoder::OpenHeaderParts& parts, Sink& sink)
	/// The optional components after the header, which the sink hears of
	/// only when it lists.
{
	if (parts.notations)
	{
		readDeclarations(r, 6, 0x30, 60, "Unexpected end of stream while parsing notation",
			"Invalid terminator of notations", [&] { readNotation(r, sink); });
	}
	if (parts.unparsedEntities)
	{
		readDeclarations(r, 7, 0x68, 120, "Unexpected end of stream while parsing unparsed entity",
			"Invalid terminator of unparsed entities", [&] { readUnparsedEntity(r, sink); });
	}
	if (parts.characterEncodingScheme)
	{
		r.skip(1);
		Decoder::nonEmptyOctetString(r, _octets);
		if constexpr (Sink::DETAILED) sink.characterEncodingScheme(_octets);
	}
	if (parts.standalone)
	{
		bool standalone = false;
		r.skip(7);
		if (!r.read(standalone)) throw FISParseException("Unexpected end of stream while parsing standalone");
		if constexpr (Sink::DETAILED) sink.standalone(standalone);
	}
	if (parts.version)
	{
		Coding coding;
		const std::string& version = readNonIdentifyingText(r, DocumentVocabulary::OTHER_STRING, wanted<Sink>(coding));
		if constexpr (Sink::DETAILED) sink.version(version, coding);
	}
}


template <class ReadItem>
void ItemReader::readDeclarations(BitStreamReader& r, int idBits, unsigned int itemId, unsigned int terminator,
	const char* endMessage, const char* terminatorMessage, ReadItem readItem)
	/// Items whose identification takes idBits bits, up to their terminator
	/// and the padding to the next octet.
{
	unsigned char id = 0;
	if (!r.read(id, idBits)) throw FISParseException(endMessage);
	while (id == itemId)
	{
		readItem();
		if (!r.read(id, idBits)) throw FISParseException(endMessage);
	}
	if (id != terminator) throw FISEncodingException(terminatorMessage);
	r.skip(8 - idBits);
}


template <class Sink>
void ItemReader::readNotation(BitStreamReader& r, Sink& sink)
{
	const UInt64 octet = r.octetsConsumed();
	bool systemPresent = false;
	bool publicPresent = false;
	FastDecoding::twoFlagsAt(r, 6, "Illegal startposition for a Notation value", systemPresent, publicPresent, "Unexpected end of stream while parsing notation");
	Coding codings[3];
	Coding* pSystemCoding = wanted<Sink>(codings[1]);
	Coding* pPublicCoding = wanted<Sink>(codings[2]);
	const std::string* pName = readIdentifying(r, DocumentVocabulary::OTHER_NCNAME, wanted<Sink>(codings[0]));
	const std::string* pSystemId = systemPresent ? readIdentifying(r, DocumentVocabulary::OTHER_URI, pSystemCoding) : 0;
	const std::string* pPublicId = publicPresent ? readIdentifying(r, DocumentVocabulary::OTHER_URI, pPublicCoding) : 0;
	if constexpr (Sink::DETAILED) sink.noteNotation(octet, codings[0], codings[1], codings[2]);
	sink.notation(*pName, pPublicId, pSystemId);
}


template <class Sink>
void ItemReader::readUnparsedEntity(BitStreamReader& r, Sink& sink)
{
	const UInt64 octet = r.octetsConsumed();
	if (r.bitPos() != 7) throw FISEncodingException("Illegal startposition for an UnparsedEntity value");
	bool publicPresent = false;
	if (!r.read(publicPresent)) throw FISParseException("Unexpected end of stream while parsing unparsed entity");
	Coding codings[4];
	const std::string* pName = readIdentifying(r, DocumentVocabulary::OTHER_NCNAME, wanted<Sink>(codings[0]));
	const std::string* pSystemId = readIdentifying(r, DocumentVocabulary::OTHER_URI, wanted<Sink>(codings[1]));
	const std::string* pPublicId = readCondIdentifying(r, publicPresent, DocumentVocabulary::OTHER_URI, wanted<Sink>(codings[2]));
	const std::string* pNotationName = readIdentifying(r, DocumentVocabulary::OTHER_NCNAME, wanted<Sink>(codings[3]));
	if constexpr (Sink::DETAILED) sink.noteUnparsedEntity(octet, codings[0], codings[1], codings[2], codings[3]);
	sink.unparsedEntity(*pName, pPublicId->empty() ? 0 : pPublicId, *pSystemId, *pNotationName);
}


template <class Sink>
void ItemReader::readChildren(BitStreamReader& r, Sink& sink)
	/// Reads children until the document's terminator, which stays in the
	/// stream. Nested elements are kept on a stack of their own instead of
	/// the call stack, so that deep documents cannot exhaust the call stack.
	///
	/// Elements and character chunks, nearly every item of a document, are
	/// told apart and started from one window of bits; the rest goes through
	/// readChild().
{
	// The window stays in step with the reader across the items decoded
	// here (terminators, chunks given by index); whatever reads through the
	// reader itself makes it stale.
	int available = 0;
	UInt64 window = 0;
	bool inStep = false;
	for (;;)
	{
		if (!inStep || available < 32)
		{
			window = r.window(available, 4);
			inStep = true;
		}
		if (available < 4) throw FISParseException("Unexpected end of stream while parsing element children");
		if ((window >> 60) == 15)
		{
			if (_openElements.empty()) return;
			// The four bits that end the innermost open element.
			r.advance(4);
			window <<= 4;
			available -= 4;
			const NameEntry& element = *_openElements.back();
			_openElements.pop_back();
			endElement(element, sink);
			continue;
		}

		// A child starts on the next octet.
		const int skip = (8 - r.bitPos()) & 7;
		if (available < skip + 8)
		{
			window = r.window(available, skip + 8);
			if (available < skip + 8) throw FISParseException("Unexpected end of stream while parsing element children");
		}
		window <<= skip;
		available -= skip;
		const unsigned int code = static_cast<unsigned int>(window >> 56);
		if ((code & 0xE0) == 0xA0)
		{
			// 10 chunk, 1 index: the index at the fourth bit.
			unsigned int index = 0;
			int size = 0;
			if (FastDecoding::integerAt(3, window << 3, available - 3, index, size))
			{
				const UInt64 octet = r.octetsConsumed() + (skip != 0);
				r.advance(skip + 3 + size);
				window <<= 3 + size;
				available -= 3 + size;
				indexedChunk(octet, index, size, sink);
				continue;
			}
		}
		inStep = false;
		if (code < 0x80)
		{
			r.advance(skip + 1);
			if (!readElementFast(r, window << 1, available - 1, sink)) readElement(r, sink);
		}
		else if ((code & 0xC0) == 0x80)
		{
			r.advance(skip + 2);
			if (!readCharacterChunkFast(r, window << 2, available - 2, sink)) readCharacterChunk(r, sink);
		}
		else
		{
			r.advance(skip);
			readChild(r, sink);
		}
	}
}


template <class Sink>
void ItemReader::readChild(BitStreamReader& r, Sink& sink)
	/// Any child, on an octet boundary.
{
	int available = 0;
	const UInt64 window = r.window(available, 8);
	if (available < 8) throw FISParseException("Unexpected end of stream while parsing element children");
	const unsigned int code = static_cast<unsigned int>(window >> 56);
	if ((code & 0x80) == 0)
	{
		r.advance(1);
		readElement(r, sink);
	}
	else if ((code & 0xC0) == 0x80)
	{
		r.advance(2);
		readCharacterChunk(r, sink);
	}
	else if ((code & 0xE0) == 0xC0)
	{
		r.advance(6);
		if ((code & 0xFC) == 0xC4) readDocumentTypeDeclaration(r, sink);
		else if ((code & 0xFC) == 0xC8) readEntityReference(r, sink);
		else throw FISEncodingException("Invalid child element");
	}
	else if (code == 0xE1)
	{
		const UInt64 octet = r.octetsConsumed();
		r.advance(8);
		readProcessingInstruction(r, octet, sink);
	}
	else if (code == 0xE2)
	{
		r.advance(8);
		readComment(r, sink);
	}
	else throw FISEncodingException("Parse error: unknown element child code");
}


template <class Sink>
bool ItemReader::readElementFast(BitStreamReader& r, UInt64 window, int available, Sink& sink)
	/// The start of an element without namespace attributes whose name is
	/// an index to a name already in use, from the window that begins at its
	/// attributes bit. Returns false, having read nothing, for everything
	/// else, which readElement() reads.
{
	if (available < 7 || _openElements.size() >= _limits.maxElementDepth) return false;
	if (((window >> 57) & 0x3F) == 0x38 || ((window << 1) >> 60) == 15) return false;
	unsigned int index = 0;
	int size = 0;
	if (!FastDecoding::integerAt(2, window << 1, available - 1, index, size)) return false;
	const NameEntry* pElement = usedName(index, true);
	if (!pElement) return false;
	const UInt64 octet = r.octetsConsumed();
	r.advance(1 + size);
	_attributeCount = 0;
	if (window >> 63) readAttributes(r, sink);
	if constexpr (Sink::DETAILED)
	{
		NameCoding coding;
		wanted<Sink>(coding);
		coding.name = indexed(DocumentVocabulary::ELEMENT_NAME, index, size);
		sink.noteElement(octet, coding);
	}
	startElement(*pElement, sink);
	return true;
}


template <class Sink>
void ItemReader::readElement(BitStreamReader& r, Sink& sink)
	/// Reads the start of an element and reports it; readChildren() reads
	/// its children and its end.
{
	const UInt64 octet = r.octetsConsumed();
	if (r.bitPos() != 1) throw FISEncodingException("Illegal startposition for an Element value");
	if (_openElements.size() >= _limits.maxElementDepth) throw FISParseException("Maximum element depth exceeded");

	int available = 0;
	const UInt64 window = r.window(available, 7);
	if (available < 7) throw FISParseException("Unexpected end of stream while parsing element");
	const bool hasAttributes = (window >> 63) != 0;
	r.advance(1);
	const std::size_t firstDeclaration = _namespaceDeclarations.size();

	if (((window >> 57) & 0x3F) == 0x38)
	{
		unsigned char bits = 0;
		r.skip(6);
		if (!r.read(bits, 4)) throw FISParseException("Unexpected end of stream while parsing element");
		while (bits != 15)
		{
			if (_namespaceDeclarations.size() - firstDeclaration >= _limits.maxNamespaceDeclarations)
				throw FISParseException("Maximum number of namespace declarations exceeded");
			r.skip(2);
			readNamespaceAttribute(r, sink);
			if (!r.read(bits, 4)) throw FISParseException("Unexpected end of stream while parsing element");
		}
		r.skip(6);
	}

	if (_namespaceDeclarations.size() > firstDeclaration)
	{
		const DeclarationScope scope = {_openElements.size(), firstDeclaration};
		_declarationScopes.push_back(scope);
	}

	NameCoding coding;
	const NameEntry& element = readQualifiedName(r, true, wanted<Sink>(coding));

	_attributeCount = 0;
	if (hasAttributes) readAttributes(r, sink);
	if constexpr (Sink::DETAILED) sink.noteElement(octet, coding);
	startElement(element, sink);
}


template <class Sink>
void ItemReader::readNamespaceAttribute(BitStreamReader& r, Sink& sink)
{
	const UInt64 octet = r.octetsConsumed();
	bool prefixPresent = false;
	bool namespacePresent = false;
	FastDecoding::twoFlagsAt(r, 6, "Illegal startposition for a NamespaceAttribute value", prefixPresent, namespacePresent, "Unexpected end of stream while parsing namespace attribute");

	Coding prefix;
	Coding uri;
	NamespaceDeclaration declaration;
	declaration.pPrefix = readCondIdentifying(r, prefixPresent, DocumentVocabulary::PREFIX, wanted<Sink>(prefix));
	declaration.pURI = readCondIdentifying(r, namespacePresent, DocumentVocabulary::NAMESPACE_NAME, wanted<Sink>(uri));
	_namespaceDeclarations.push_back(declaration);
	if constexpr (Sink::DETAILED) sink.noteNamespace(octet, prefix, uri);
	sink.startPrefixMapping(*declaration.pPrefix, *declaration.pURI);
}


template <class Sink>
void ItemReader::readAttributes(BitStreamReader& r, Sink& sink)
{
	for (;;)
	{
		int available = 0;
		const UInt64 window = r.window(available, 1);
		if (available < 1) throw FISParseException("Unexpected end of stream while parsing element");
		if (window >> 63) break;
		r.advance(1);
		NameCoding nameCoding;
		Coding valueCoding;
		wanted<Sink>(nameCoding);
		wanted<Sink>(valueCoding);
		const UInt64 octet = Sink::DETAILED ? r.octetsConsumed() : 0;
		// An attribute whose name is an index to a name in use and whose value
		// is an index: both from the same window.
		unsigned int nameIndex = 0;
		unsigned int valueIndex = 0;
		int nameSize = 0;
		int valueSize = 0;
		const UInt64 name = window << 1;
		const NameEntry* pName = 0;
		if ((name >> 60) != 15 && FastDecoding::integerAt(1, name, available - 1, nameIndex, nameSize)
			&& (pName = usedName(nameIndex, false)) != 0)
		{
			if constexpr (Sink::DETAILED) nameCoding.name = indexed(DocumentVocabulary::ATTRIBUTE_NAME, nameIndex, nameSize);
			const UInt64 value = name << nameSize;
			const int rest = available - 1 - nameSize;
			if (rest > 0 && (value >> 63) && FastDecoding::integerAt(1, value << 1, rest - 1, valueIndex, valueSize))
			{
				r.advance(nameSize + 1 + valueSize);
				addAttribute(*pName, deliveredAt(DocumentVocabulary::ATTRIBUTE_VALUE, valueIndex));
				if constexpr (Sink::DETAILED)
				{
					sink.noteAttribute(octet, nameCoding, indexed(DocumentVocabulary::ATTRIBUTE_VALUE, valueIndex, 1 + valueSize));
				}
				continue;
			}
			r.advance(nameSize);
			readAttributeValueOf(r, *pName, wanted<Sink>(valueCoding));
		}
		else
		{
			if (r.bitPos() != 1) throw FISEncodingException("Illegal startposition for a Attribute value");
			readAttributeValueOf(r, readQualifiedName(r, false, wanted<Sink>(nameCoding)), wanted<Sink>(valueCoding));
		}
		if constexpr (Sink::DETAILED) sink.noteAttribute(octet, nameCoding, valueCoding);
	}
	// The 1 that ends the attributes and three more bits of the terminator.
	r.skip(4);
}


template <class Sink>
inline void ItemReader::startElement(const NameEntry& element, Sink& sink)
{
	if (element.excess) deliver(element.excess);
	sink.startElement(element);
	if (_longAttributes) releaseAttributeCopies();
	_openElements.push_back(&element);
}


template <class Sink>
void ItemReader::endElement(const NameEntry& element, Sink& sink)
	/// The element's own declarations end after it, last declared first.
{
	sink.endElement(element);
	if (!_declarationScopes.empty() && _declarationScopes.back().depth == _openElements.size())
	{
		const std::size_t first = _declarationScopes.back().first;
		_declarationScopes.pop_back();
		for (std::size_t i = _namespaceDeclarations.size(); i > first; --i)
		{
			sink.endPrefixMapping(*_namespaceDeclarations[i - 1].pPrefix);
		}
		_namespaceDeclarations.resize(first);
	}
}


template <class Sink>
inline void ItemReader::indexedChunk(UInt64 octet, unsigned int index, int size, Sink& sink)
	/// A chunk given by an index of size bits.
{
	const std::string& text = deliveredAt(DocumentVocabulary::CONTENT_CHARACTER_CHUNK, index);
	if constexpr (Sink::DETAILED) sink.noteChunk(octet, indexed(DocumentVocabulary::CONTENT_CHARACTER_CHUNK, index, 1 + size));
	sink.characters(text.data(), text.size());
}


template <class Sink>
bool ItemReader::readCharacterChunkFast(BitStreamReader& r, UInt64 window, int available, Sink& sink)
	/// The common chunks, from the window that begins after the chunk's two
	/// bits: an index, or a UTF-8 literal, reported as they stand in the
	/// vocabulary or in the input. Returns false, having read nothing, for
	/// the rest.
{
	const UInt64 octet = Sink::DETAILED ? r.octetsConsumed() : 0;
	unsigned int index = 0;
	int size = 0;
	if (window >> 63)
	{
		if (!FastDecoding::integerAt(3, window << 1, available - 1, index, size)) return false;
		r.advance(1 + size);
		indexedChunk(octet, index, size, sink);
		return true;
	}
	const UInt64 start = Sink::DETAILED ? bitOffset(r) : 0;
	const char* pData = 0;
	std::size_t length = 0;
	bool view = false;
	if (!readUTF8Literal(r, window, available, 6, pData, length, view)) return false;
	const bool addToTable = ((window >> 62) & 1) != 0;
	unsigned int added = 0;
	if (addToTable)
	{
		added = addString(DocumentVocabulary::CONTENT_CHARACTER_CHUNK, pData, length);
	}
	if constexpr (Sink::DETAILED)
	{
		Coding coding;
		coding.form = Coding::LITERAL;
		coding.table = DocumentVocabulary::CONTENT_CHARACTER_CHUNK;
		coding.index = added;
		coding.added = addToTable;
		coding.encoding = DocumentVocabulary::UTF8;
		coding.bits = bitOffset(r) - start;
		sink.noteChunk(octet, coding);
	}
	sink.characters(pData, length);
	return true;
}


template <class Sink>
void ItemReader::readCharacterChunk(BitStreamReader& r, Sink& sink)
{
	if (r.bitPos() != 2) throw FISEncodingException("Illegal startposition for a CharacterChunk value");
	int available = 0;
	const UInt64 window = r.window(available, 1);
	if (readCharacterChunkFast(r, window, available, sink)) return;

	const UInt64 octet = r.octetsConsumed();
	Coding coding;
	Encoding* pValue = readNonIdentifying(r, DocumentVocabulary::CONTENT_CHARACTER_CHUNK, true, wanted<Sink>(coding));
	if constexpr (Sink::DETAILED) sink.noteChunk(octet, coding);
	sink.value(*pValue);
}


template <class Sink>
void ItemReader::readComment(BitStreamReader& r, Sink& sink)
{
	const UInt64 octet = r.octetsConsumed() - 1;
	if (r.bitPos() != 0) throw FISEncodingException("Illegal startposition for a Comment value");
	Coding coding;
	const std::string& text = readNonIdentifyingText(r, DocumentVocabulary::OTHER_STRING, wanted<Sink>(coding));
	if constexpr (Sink::DETAILED) sink.noteComment(octet, coding);
	sink.comment(text);
}


template <class Sink>
void ItemReader::readProcessingInstruction(BitStreamReader& r, UInt64 octet, Sink& sink)
{
	Coding target;
	Coding data;
	const std::string* pTarget = readIdentifying(r, DocumentVocabulary::OTHER_NCNAME, wanted<Sink>(target));
	const std::string& text = readNonIdentifyingText(r, DocumentVocabulary::OTHER_STRING, wanted<Sink>(data));
	if constexpr (Sink::DETAILED) sink.noteProcessingInstruction(octet, target, data);
	sink.processingInstruction(*pTarget, text);
}


template <class Sink>
void ItemReader::readDocumentTypeDeclaration(BitStreamReader& r, Sink& sink)
{
	const UInt64 octet = r.octetsConsumed();
	bool systemPresent = false;
	bool publicPresent = false;
	FastDecoding::twoFlagsAt(r, 6, "Illegal startposition for a DocumentTypeDeclaration value", systemPresent, publicPresent, "Unexpected end of stream while parsing document type declaration");
	Coding systemCoding;
	Coding publicCoding;
	const std::string* pSystemId = readCondIdentifying(r, systemPresent, DocumentVocabulary::OTHER_URI, wanted<Sink>(systemCoding));
	const std::string* pPublicId = readCondIdentifying(r, publicPresent, DocumentVocabulary::OTHER_URI, wanted<Sink>(publicCoding));
	// The root element's name is not part of the item: it is reported empty.
	if constexpr (Sink::DETAILED) sink.noteDocumentType(octet, systemCoding, publicCoding);
	sink.startDTD(*pPublicId, *pSystemId);

	unsigned char stat = 0;
	if (!r.read(stat, 4)) throw FISParseException("Unexpected end of stream while parsing document type declaration");
	while (stat == 14)
	{
		// The four bits read are the first half of the instruction's octet.
		const UInt64 instruction = r.octetsConsumed();
		r.skip(4);
		readProcessingInstruction(r, instruction, sink);
		if (!r.read(stat, 4)) throw FISParseException("Unexpected end of stream while parsing document type declaration");
	}
	if (stat != 15) throw FISEncodingException("Invalid terminator of document type declaration");
	sink.endDTD();
}


template <class Sink>
void ItemReader::readEntityReference(BitStreamReader& r, Sink& sink)
	/// Read, and reported to nobody: only a listing hears of it.
{
	const UInt64 octet = r.octetsConsumed();
	bool systemPresent = false;
	bool publicPresent = false;
	// The notation's message is the one used for a bad position.
	FastDecoding::twoFlagsAt(r, 6, "Illegal startposition for a Notation value", systemPresent, publicPresent, "Unexpected end of stream while parsing unexpanded entity reference");
	Coding codings[3];
	const std::string* pName = readIdentifying(r, DocumentVocabulary::OTHER_NCNAME, wanted<Sink>(codings[0]));
	const std::string* pSystemId = readCondIdentifying(r, systemPresent, DocumentVocabulary::OTHER_URI, wanted<Sink>(codings[1]));
	const std::string* pPublicId = readCondIdentifying(r, publicPresent, DocumentVocabulary::OTHER_URI, wanted<Sink>(codings[2]));
	if constexpr (Sink::DETAILED) sink.entityReference(octet, *pName, *pSystemId, *pPublicId, codings);
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_ItemReader_INCLUDED
