//
// FastInfosetWriter.h
//
// Library: FastInfoset
// Module:  FastInfosetWriter
//


#ifndef FastInfoset_FastInfosetWriter_INCLUDED
#define FastInfoset_FastInfosetWriter_INCLUDED


#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "Ixor/FastInfoset/FISContentHandler.h"
#include "Ixor/FastInfoset/FISDocumentHandler.h"
#include "Poco/SAX/DTDHandler.h"
#include "Poco/SAX/LexicalHandler.h"
#include <iosfwd>
#include <memory>
#include <string>


namespace Ixor {
namespace FastInfoset {


class FastInfoset_API FastInfosetWriter:
	public FISContentHandler,
	public Ixor::XML::LexicalHandler,
	public Ixor::XML::DTDHandler,
	public FISDocumentHandler
	/// Writes the SAX events of one document as a Fast Infoset document to a
	/// caller-owned output stream.
	///
	/// Names and strings that were written before go out as small indexes
	/// into the document vocabulary; when a table can take no more entries
	/// (a full hash table, or the format's limit of 2^20 indexes), new ones
	/// are written in full and the document stays correct. Typed values
	/// given through the FISContentHandler operations are kept until the
	/// next event of another kind and written as one encoded string per run
	/// of one algorithm.
	///
	/// The header goes out with the root element (or with endDocument() when
	/// there is none), so notations and unparsed entities declared before
	/// it, inside the document type declaration as an XML parser reports
	/// them, still go into it; comments, processing instructions and the
	/// document type declaration before the root element wait for it.
	///
	/// A writer writes one document; the output stream must outlive it, and
	/// the next writer on the same stream writes the next document. Event
	/// sequences that make no document raise FISException and are refused
	/// before anything of them is written where the writer can tell: events
	/// before startDocument() or after endDocument(), an endElement() that
	/// does not match the open element, endDocument() with open elements, a
	/// second root element, text outside the root element, an attribute
	/// given twice, names that are not XML names (checked the first time a
	/// name is written in full), "Tag mismatch" and "Cannot nest CDATA
	/// sections". A failing stream raises Ixor::IOException "error while
	/// writing Fast Infoset document to stream". The octets reach the stream
	/// in blocks and all of them by endDocument(); destroying the writer
	/// completes a document cut short.
{
public:
	static const int DEFAULT_MAX_INDEXED_STRING_LENGTH = 64;
		/// The indexed length a writer starts with (see
		/// setMaxIndexedStringLength()). Text between tags is mostly line
		/// ends with indentation, short values and words: with 64 they
		/// repeat as indexes, and documents are about a fifth smaller than
		/// with 16 (32 gains two thirds of that), for at most twice the
		/// memory of the tables.

	explicit FastInfosetWriter(std::ostream& out);
		/// A writer with hash tables and no XML declaration.

	FastInfosetWriter(std::ostream& out, bool writeXMLDeclaration, DocumentVocabulary::VocabularyImpl impl);
		/// A writer with tables of the given kind (VOC_HASH or VOC_MAP; hash
		/// tables have fixed capacities, map tables grow without limit).

	FastInfosetWriter(std::ostream& out, bool writeXMLDeclaration, const DocumentVocabulary& vocabulary);
		/// A writer that starts from a copy of vocabulary; what it holds
		/// beyond a fresh vocabulary is written as the initial vocabulary.

	~FastInfosetWriter();

	void reset(std::ostream& out);
		/// Makes the writer ready for a new document on out, keeping its
		/// memory: a writer restarted for each of many documents allocates
		/// nothing once its tables have grown to what the documents need.
		/// The settings stay (tables kind, XML declaration, indexed length,
		/// external vocabulary), and so does the vocabulary as it was when
		/// the last document started: what that document added is
		/// forgotten, so every document gets the octets a new writer with
		/// the same settings would write. A document not ended is abandoned:
		/// what of it had not yet reached its stream is dropped.

	// ContentHandler
	void setDocumentLocator(const Ixor::XML::Locator* pLocator);
	void startDocument();
	void endDocument();
	void startElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname, const Ixor::XML::Attributes& attributes);
	void endElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname);
	void characters(const Ixor::XML::XMLChar ch[], int start, int length);
		/// Writes ch[start, start + length); a zero character in that range
		/// ends the text. Empty text writes nothing.
	void ignorableWhitespace(const Ixor::XML::XMLChar ch[], int start, int length);
	void processingInstruction(const Ixor::XML::XMLString& target, const Ixor::XML::XMLString& data);
	void startPrefixMapping(const Ixor::XML::XMLString& prefix, const Ixor::XML::XMLString& uri);
	void endPrefixMapping(const Ixor::XML::XMLString& prefix);
	void skippedEntity(const Ixor::XML::XMLString& name);

	// FISContentHandler
	void binaryData(const char* data, std::size_t length);
	void encodedData(short value);
	void encodedData(int value);
	void encodedData(long value);
	void encodedData(bool value);
	void encodedData(float value);
	void encodedData(double value);
	void encodedData(const Ixor::UUID& value);

	// LexicalHandler
	void startCDATA();
		/// Throws FISException "Cannot nest CDATA sections" inside a CDATA
		/// section. Character data of the section goes out with the CDATA
		/// encoding algorithm.
	void endCDATA();
	void comment(const Ixor::XML::XMLChar ch[], int start, int length);
		/// Writes the length characters at ch + start. Comments inside the
		/// document type declaration are not written: the format gives it no
		/// comment children.
	void startDTD(const Ixor::XML::XMLString& name, const Ixor::XML::XMLString& publicId, const Ixor::XML::XMLString& systemId);
	void endDTD();
	void startEntity(const Ixor::XML::XMLString& name);
	void endEntity(const Ixor::XML::XMLString& name);

	// DTDHandler
	// Both are taken until the root element starts; later they throw
	// FISException.
	void notationDecl(const Ixor::XML::XMLString& name, const Ixor::XML::XMLString* publicId, const Ixor::XML::XMLString* systemId);
	void unparsedEntityDecl(const Ixor::XML::XMLString& name, const Ixor::XML::XMLString* publicId, const Ixor::XML::XMLString& systemId, const Ixor::XML::XMLString& notationName);

	// FISDocumentHandler
	void setDocumentVocabulary(const DocumentVocabulary& vocabulary);
		/// Throws Ixor::InvalidArgumentException for a VOC_VECTOR vocabulary.
	DocumentVocabulary& getDocumentVocabulary();
	const DocumentVocabulary& getDocumentVocabulary() const;
	void setWriteXMLDeclaration(bool write);
		/// Whether the document starts with "<?xml encoding='finf'?>".
	void setExternalVocabulary(const std::string& uri, const DocumentVocabulary& vocabulary);
		/// The document names uri as its external vocabulary and writes only
		/// what its vocabulary holds beyond vocabulary. A writer whose
		/// vocabulary does not start with vocabulary's entries (a fresh one,
		/// say) starts from a copy of vocabulary (vector tables are copied
		/// into map tables), so that names and strings the vocabulary holds
		/// go out as indexes. The indexed length (see
		/// setMaxIndexedStringLength()) grows to the longest attribute value,
		/// character chunk or other string of vocabulary, so that they are
		/// looked up. Call it before startDocument().

	// Document building
	void startElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname);
	void emptyElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname);
	void emptyElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname, const Ixor::XML::Attributes& attributes);
	void dataElement(const Ixor::XML::XMLString& uri, const Ixor::XML::XMLString& localName, const Ixor::XML::XMLString& qname,
		const Ixor::XML::XMLString& data,
		const Ixor::XML::XMLString& attr1 = Ixor::XML::XMLString(), const Ixor::XML::XMLString& value1 = Ixor::XML::XMLString(),
		const Ixor::XML::XMLString& attr2 = Ixor::XML::XMLString(), const Ixor::XML::XMLString& value2 = Ixor::XML::XMLString(),
		const Ixor::XML::XMLString& attr3 = Ixor::XML::XMLString(), const Ixor::XML::XMLString& value3 = Ixor::XML::XMLString());
		/// An element without namespace holding data, with up to three
		/// attributes (those with an empty name are left out).
	void characters(const std::string& text);
		/// Writes text as one character chunk; empty text writes nothing.
	void startFragment();
	void endFragment();
		/// Fragments are not supported: both throw FISException.

	void setMaxIndexedStringLength(int length);
		/// Attribute values, character chunks, comments and processing
		/// instruction data of at most length octets enter the vocabulary
		/// and repeat as indexes; longer ones are always written in full.
		/// The default is DEFAULT_MAX_INDEXED_STRING_LENGTH.

	int getMaxIndexedStringLength() const;

	FastInfosetWriter(const FastInfosetWriter&) = delete;
	FastInfosetWriter& operator = (const FastInfosetWriter&) = delete;

private:
	class Impl;
	std::unique_ptr<Impl> _pImpl;
};


} } // namespace Ixor::FastInfoset


#endif // FastInfoset_FastInfosetWriter_INCLUDED
