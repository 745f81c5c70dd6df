//
// ItemWriter.h
//
// Library: FastInfoset
// Module:  ItemWriter
//
// The bits of the items a writer writes. Internal: this header is not
// installed.
//


#ifndef FastInfoset_ItemWriter_INCLUDED
#define FastInfoset_ItemWriter_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/BitStreamWriter.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "PendingValues.h"
#include "WriterTables.h"
#include <cstddef>
#include <string>


namespace Ixor {
namespace FastInfoset {


class PendingElement;


class ItemWriter
	/// Writes the items of a document onto a bit stream: elements with their
	/// namespace declarations and attributes, character chunks, comments,
	/// processing instructions, the parts of the document type declaration
	/// and of the header's declarations. Every name and string goes out as
	/// an index where the tables hold it, else in full, and enters its
	/// table; what a table cannot take goes out in full and stays out.
	///
	/// The format fixes the bit at which each item starts; an item called
	/// elsewhere throws FISEncodingException "Illegal startposition for ..."
	/// before it writes anything. Names that go out in full for the first
	/// time must be XML names: FISException "Not an XML name" or "Not a
	/// namespace prefix" otherwise.
{
public:
	ItemWriter(BitStreamWriter& writer, WriterTables& tables);
		/// Both must outlive the item writer.

	void setMaxIndexedStringLength(int length);
	int maxIndexedStringLength() const;
		/// Non-identifying strings of at most this many octets enter their
		/// tables; longer ones always go out in full.

	void setInCDATA(bool inCDATA);
		/// Inside a CDATA section strings go out with the CDATA algorithm.

	void element(const PendingElement& element, const std::string& uri, const std::string& localName, WriterTables::StoredName& stored);
		/// From the next octet: the element, its declarations, its name and
		/// its attributes. stored tells where the tables hold the parts of
		/// its name.

	void terminator();
		/// The four bits that end an element, the document or the document
		/// type declaration.

	void characterChunk(const char* text, std::size_t length);
		/// Text of at least one octet, as one character chunk.

	void typedChunks(const PendingValues::Runs& runs);
		/// One character chunk per run; typed values never enter a table.

	void processingInstruction(const std::string& target, const std::string& data);
	void comment(const std::string& text);

	void documentTypeDeclaration(const std::string& publicId, const std::string& systemId);
	void documentTypeDeclarationEnd();

	void notation(const std::string& name, const std::string* pPublicId, const std::string* pSystemId);
		/// At the seventh bit, after the notation's identification.

	void unparsedEntity(const std::string& name, const std::string* pPublicId, const std::string& systemId, const std::string& notationName);
		/// At the eighth bit, after the entity's identification.

	// The building blocks, each at the bits the format allows.
	void namespaceAttribute(const std::string& prefix, const std::string& uri);
	void attribute(const std::string& prefix, const std::string& uri, const std::string& localName, const std::string& value);
	unsigned int qualifiedNameOrIndex(const std::string& prefix, const std::string& uri, const std::string& localName, bool element, WriterTables::StoredName* pStored);
	unsigned int identifyingStringOrIndex(const std::string& str, DocumentVocabulary::ID voc);
	unsigned int nonIdentifyingStringOrIndex(const char* data, std::size_t length, DocumentVocabulary::ID voc);
	void encodedCharacterString(const char* data, std::size_t length);
	void chunkString(const char* data, std::size_t length);

	static void checkName(const std::string& name, DocumentVocabulary::ID voc);
		/// Throws FISException when name is not an XML name (an NCName for
		/// PREFIX).

private:
	bool nonIdentifyingStringAtOctet(const char* data, std::size_t length, DocumentVocabulary::ID voc, unsigned int lead, int leadSize);
	unsigned int literalName(const std::string& prefix, const std::string& uri, const std::string& localName, bool element, unsigned int parts[3]);
	void integer(unsigned int value);

	BitStreamWriter& _writer;
	WriterTables&    _tables;
	int              _maxIndexedStringLength;
	bool             _inCDATA;
};


//
// inlines
//
inline void ItemWriter::setMaxIndexedStringLength(int length)
{
	_maxIndexedStringLength = length;
}


inline int ItemWriter::maxIndexedStringLength() const
{
	return _maxIndexedStringLength;
}


inline void ItemWriter::setInCDATA(bool inCDATA)
{
	_inCDATA = inCDATA;
}


inline void ItemWriter::characterChunk(const char* text, std::size_t length)
{
	_writer.pad(false);
	if (nonIdentifyingStringAtOctet(text, length, DocumentVocabulary::CONTENT_CHARACTER_CHUNK, 2, 2)) return;
	_writer.write(2u, 2);
	chunkString(text, length);
}


inline void ItemWriter::terminator()
{
	_writer.write(15u, 4);
}


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_ItemWriter_INCLUDED
