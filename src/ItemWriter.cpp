#include "ItemWriter.h"
#include "Ixor/FastInfoset/Encoder.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "AlgorithmTable.h"
#include "FastEncoding.h"
#include "PendingElement.h"
#include "XMLTextRules.h"


namespace Ixor {
namespace FastInfoset {


ItemWriter::ItemWriter(BitStreamWriter& writer, WriterTables& tables):
	_writer(writer),
	_tables(tables),
	_maxIndexedStringLength(FastInfosetWriter::DEFAULT_MAX_INDEXED_STRING_LENGTH),
	_inCDATA(false)
{
}


//
// Items
//
void ItemWriter::element(const PendingElement& element, const std::string& uri, const std::string& localName, WriterTables::StoredName& stored)
{
	_writer.pad(false);
	_writer.write(false);
	const std::size_t attributeCount = element.attributeCount();
	_writer.write(attributeCount != 0);
	if (element.declarationCount() != 0)
	{
		_writer.write(0x38u, 6);                      // 111000: namespace attributes follow
		for (std::size_t i = 0; i < element.declarationCount(); ++i)
		{
			_writer.write(0x33u, 6);                  // 110011: one namespace attribute
			namespaceAttribute(element.declaration(i).first, element.declaration(i).second);
		}
		_writer.write(0x3C0u, 10);                    // 1111 terminator, then 000000 up to the name
	}
	qualifiedNameOrIndex(element.prefix(), uri, localName, true, &stored);
	if (attributeCount != 0)
	{
		for (std::size_t i = 0; i < attributeCount; ++i)
		{
			const PendingElement::Attribute& a = element.attribute(i);
			_writer.write(false);
			attribute(a.prefix, *a.pURI, *a.pLocalName, *a.pValue);
		}
		terminator();
	}
}


void ItemWriter::typedChunks(const PendingValues::Runs& runs)
{
	_writer.pad(false);
	for (const Ixor::AutoPtr<Encoding>& value: runs)
	{
		_writer.write(0x23u, 6);                      // 10 chunk, 0 literal, 0 not added, 11 an algorithm
		Encoder::integer(_writer, value->type());
		value->write(_writer);
	}
}


void ItemWriter::processingInstruction(const std::string& target, const std::string& data)
{
	_writer.pad(false);
	_writer.write(0xE1u, 8);
	identifyingStringOrIndex(target, DocumentVocabulary::OTHER_NCNAME);
	nonIdentifyingStringOrIndex(data.data(), data.size(), DocumentVocabulary::OTHER_STRING);
}


void ItemWriter::comment(const std::string& text)
{
	_writer.pad(false);
	_writer.write(0xE2u, 8);
	nonIdentifyingStringOrIndex(text.data(), text.size(), DocumentVocabulary::OTHER_STRING);
}


void ItemWriter::documentTypeDeclaration(const std::string& publicId, const std::string& systemId)
{
	_writer.pad(false);
	_writer.write(0x31u, 6);                          // 110001
	_writer.write(!systemId.empty());
	_writer.write(!publicId.empty());
	if (!systemId.empty()) identifyingStringOrIndex(systemId, DocumentVocabulary::OTHER_URI);
	if (!publicId.empty()) identifyingStringOrIndex(publicId, DocumentVocabulary::OTHER_URI);
}


void ItemWriter::documentTypeDeclarationEnd()
{
	terminator();
	poco_assert(_writer.bitPos() == 4);
}


void ItemWriter::notation(const std::string& name, const std::string* publicId, const std::string* systemId)
{
	if (_writer.bitPos() != 6)
		throw FISEncodingException("Illegal startposition for a Notation value");
	_writer.write(systemId != 0);
	_writer.write(publicId != 0);
	identifyingStringOrIndex(name, DocumentVocabulary::OTHER_NCNAME);
	if (systemId) identifyingStringOrIndex(*systemId, DocumentVocabulary::OTHER_URI);
	if (publicId) identifyingStringOrIndex(*publicId, DocumentVocabulary::OTHER_URI);
}


void ItemWriter::unparsedEntity(const std::string& name, const std::string* publicId, const std::string& systemId, const std::string& notationName)
{
	if (_writer.bitPos() != 7)
		throw FISEncodingException("Illegal startposition for an UnparsedEntity value");
	_writer.write(publicId != 0);
	identifyingStringOrIndex(name, DocumentVocabulary::OTHER_NCNAME);
	identifyingStringOrIndex(systemId, DocumentVocabulary::OTHER_URI);
	if (publicId) identifyingStringOrIndex(*publicId, DocumentVocabulary::OTHER_URI);
	identifyingStringOrIndex(notationName, DocumentVocabulary::OTHER_NCNAME);
}


//
// Building blocks
//
void ItemWriter::namespaceAttribute(const std::string& prefix, const std::string& uri)
{
	if (_writer.bitPos() != 6)
		throw FISEncodingException("Illegal startposition for a NamespaceAttribute value");
	_writer.write(!prefix.empty());
	_writer.write(!uri.empty());
	if (!prefix.empty()) identifyingStringOrIndex(prefix, DocumentVocabulary::PREFIX);
	if (!uri.empty()) identifyingStringOrIndex(uri, DocumentVocabulary::NAMESPACE_NAME);
}


void ItemWriter::attribute(const std::string& prefix, const std::string& uri, const std::string& localName, const std::string& value)
{
	if (_writer.bitPos() != 1)
		throw FISEncodingException("Illegal startposition for a Attribute value");
	qualifiedNameOrIndex(prefix, uri, localName, false, 0);
	if (value.empty() || !nonIdentifyingStringAtOctet(value.data(), value.size(), DocumentVocabulary::ATTRIBUTE_VALUE, 0, 0))
		nonIdentifyingStringOrIndex(value.data(), value.size(), DocumentVocabulary::ATTRIBUTE_VALUE);
	poco_assert(_writer.bitPos() == 0);
}


unsigned int ItemWriter::qualifiedNameOrIndex(const std::string& prefix, const std::string& uri, const std::string& localName, bool element, WriterTables::StoredName* pStored)
	/// The result is NOT_FOUND for a name that its table could not take.
{
	const int pos = _writer.bitPos();
	if (pos != 1 && pos != 2)
		throw FISEncodingException("Illegal startposition for a writeQualifiedNameOrIndex value");
	poco_assert(!localName.empty());

	unsigned int index = _tables.findName(prefix, uri, localName, element, pStored);
	if (index != WriterTables::NOT_FOUND)
	{
		integer(index);
		poco_assert(_writer.bitPos() == 0);
		return index;
	}
	_writer.write(pos == 1 ? 0x1Eu : 0xFu, pos == 1 ? 5 : 4);   // 11110 for attributes, 1111 for elements
	unsigned int parts[3];
	index = literalName(prefix, uri, localName, element, parts);
	poco_assert(_writer.bitPos() == 0);
	if (pStored)
	{
		pStored->pPrefix = _tables.stored(DocumentVocabulary::PREFIX, parts[0]);
		pStored->pURI = _tables.stored(DocumentVocabulary::NAMESPACE_NAME, parts[1]);
		pStored->pLocalName = _tables.stored(DocumentVocabulary::LOCAL_NAME, parts[2]);
	}
	return index;
}


unsigned int ItemWriter::literalName(const std::string& prefix, const std::string& uri, const std::string& localName, bool element, unsigned int parts[3])
	/// The literal name and, in parts, the indexes of its prefix, namespace
	/// name and local name (0 for an absent one, NOT_FOUND for one that its
	/// table could not take).
{
	poco_assert(!localName.empty());
	_writer.write(!prefix.empty());
	_writer.write(!uri.empty());
	parts[0] = prefix.empty() ? 0 : identifyingStringOrIndex(prefix, DocumentVocabulary::PREFIX);
	parts[1] = uri.empty() ? 0 : identifyingStringOrIndex(uri, DocumentVocabulary::NAMESPACE_NAME);
	parts[2] = identifyingStringOrIndex(localName, DocumentVocabulary::LOCAL_NAME);
	const unsigned int NOT_FOUND = WriterTables::NOT_FOUND;
	if (parts[0] != NOT_FOUND && parts[1] != NOT_FOUND && parts[2] != NOT_FOUND)
		return _tables.addName(QualifiedNameEntry(parts[0], parts[1], parts[2]), element);
	// The reader adds the name with the parts it added. A stand-in that no
	// lookup meets (no table gives out these ids) keeps this table in step
	// with the reader's, so that the names after it get the same indexes.
	_tables.addName(QualifiedNameEntry(NOT_FOUND, NOT_FOUND - 1, static_cast<unsigned int>(_tables.nameCount(element))), element);
	return NOT_FOUND;
}


unsigned int ItemWriter::identifyingStringOrIndex(const std::string& str, DocumentVocabulary::ID voc)
	/// The index of str, or NOT_FOUND when the table could not take it.
	/// Names are checked the first time they go out in full; repeats cost
	/// nothing.
{
	bool existed = false;
	const unsigned int index = _tables.indexOf(voc, str.data(), str.size(), existed);
	// A name that is refused has entered the table, but the document it
	// would have gone into is cut short anyway.
	if ((!existed || str.empty()) && (voc == DocumentVocabulary::PREFIX || voc == DocumentVocabulary::LOCAL_NAME || voc == DocumentVocabulary::OTHER_NCNAME))
		checkName(str, voc);
	// A table that cannot take the string gets no more entries: the reader,
	// which adds every identifying string written in full, only holds more.
	if (existed)
	{
		if (_writer.bitPos() != 0)
			throw FISEncodingException("Illegal startposition for an writeIdentifyingStringIndex");
		_writer.write(true);
		Encoder::integer(_writer, index);
	}
	else
	{
		if (_writer.bitPos() != 0)
			throw FISEncodingException("Illegal startposition for an writeIdentifyingString");
		_writer.write(false);
		Encoder::nonEmptyOctetString(_writer, str);
	}
	return index;
}


void ItemWriter::checkName(const std::string& name, DocumentVocabulary::ID voc)
{
	if (voc == DocumentVocabulary::PREFIX)
	{
		if (!XMLTextRules::isNCName(name)) throw FISException("Not a namespace prefix", name);
	}
	else if (!XMLTextRules::isName(name)) throw FISException("Not an XML name", name);
}


unsigned int ItemWriter::nonIdentifyingStringOrIndex(const char* data, std::size_t length, DocumentVocabulary::ID voc)
	/// The index of the string, or 0 when it was not added.
{
	const int pos = _writer.bitPos();
	if (pos != 0 && pos != 2)
		throw FISEncodingException("Illegal startposition for a NonIdentifyingStringOrIndex value");
	bool addToTable = _maxIndexedStringLength >= 0 && length <= static_cast<std::size_t>(_maxIndexedStringLength);
	bool existed = false;
	unsigned int index = 0;
	if (addToTable) index = _tables.indexOf(voc, data, length, existed);
	// A table that cannot take the string: it goes out in full, not added.
	if (index == WriterTables::NOT_FOUND)
	{
		addToTable = false;
		index = 0;
	}
	_writer.write(existed);
	if (existed)
	{
		Encoder::integer(_writer, index);
	}
	else
	{
		_writer.write(addToTable);
		encodedCharacterString(data, length);
	}
	return index;
}


bool ItemWriter::nonIdentifyingStringAtOctet(const char* data, std::size_t length, DocumentVocabulary::ID voc, unsigned int lead, int leadSize)
	/// A non-identifying string on an octet boundary after leadSize bits
	/// lead (the two bits of a chunk, or none for an attribute value), with
	/// all its leading bits in one write: the same bits as the general path,
	/// which takes what this does not (CDATA sections, lengths the encoder
	/// refuses).
{
	if (_inCDATA) return false;
	const int pos = leadSize;
	UInt64 lengthBits = 0;
	int lengthSize = 0;
	if (!FastEncoding::stringLengthBits(pos + 4, length, lengthBits, lengthSize)) return false;
	bool addToTable = _maxIndexedStringLength >= 0 && length <= static_cast<std::size_t>(_maxIndexedStringLength);
	if (addToTable)
	{
		bool existed = false;
		const unsigned int index = _tables.indexOf(voc, data, length, existed);
		addToTable = index != WriterTables::NOT_FOUND;
		if (existed)
		{
			// 1 for an index, the index on the next bit.
			const unsigned long head = (static_cast<unsigned long>(lead) << 1) | 1;
			UInt32 bits = 0;
			int size = 0;
			if (FastEncoding::integerBits(pos + 1, index, bits, size))
			{
				_writer.write((head << size) | bits, leadSize + 1 + size);
			}
			else
			{
				_writer.write(head, leadSize + 1);
				Encoder::integer(_writer, index);
			}
			return true;
		}
	}
	// 0 for a literal, the add-to-table bit, 00 for UTF-8, the length, the
	// octets.
	const unsigned long head = (static_cast<unsigned long>(lead) << 4) | (addToTable ? 4ul : 0ul);
	_writer.write((head << lengthSize) | lengthBits, leadSize + 4 + lengthSize);
	_writer.write(data, length);
	return true;
}


void ItemWriter::encodedCharacterString(const char* data, std::size_t length)
	/// UTF-8, or inside a CDATA section the octets under the CDATA
	/// algorithm.
{
	const int pos = _writer.bitPos();
	if (pos != 2 && pos != 4)
		throw FISEncodingException("Illegal startposition for a writeEncodedCharacterString");
	if (_inCDATA)
	{
		_writer.write(3u, 2);
		Encoder::integer(_writer, AlgorithmTable::CDATA);
	}
	else
	{
		_writer.write(0u, 2);
	}
	Encoder::nonEmptyOctetString(_writer, data, length);
}


void ItemWriter::chunkString(const char* data, std::size_t length)
	/// The string of a character chunk, after its two bits.
{
	if (_writer.bitPos() != 2)
		throw FISEncodingException("Illegal startposition for a CharacterChunk value");
	nonIdentifyingStringOrIndex(data, length, DocumentVocabulary::CONTENT_CHARACTER_CHUNK);
}


FastInfoset_ALWAYS_INLINE void ItemWriter::integer(unsigned int value)
	/// Encoder::integer() with the common values in one write.
{
	UInt32 bits = 0;
	int size = 0;
	if (FastEncoding::integerBits(_writer.bitPos(), value, bits, size)) _writer.write(bits, size);
	else Encoder::integer(_writer, value);
}


} } // namespace Ixor::FastInfoset
