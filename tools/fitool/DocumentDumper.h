//
// DocumentDumper.h
//
// Tool: fitool
// Module: DocumentDumper
//


#ifndef Fitool_DocumentDumper_INCLUDED
#define Fitool_DocumentDumper_INCLUDED


#include "DumpSummary.h"
#include "Ixor/FastInfoset/Decoder.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "Poco/Types.h"
#include <cstddef>
#include <iosfwd>
#include <string>


namespace Ixor {
namespace FastInfoset {
	class BitStreamReader;
	class FastInfosetParser;
} }


namespace Fitool {


class DocumentDumper
	/// Lists a Fast Infoset document for people who debug one: the header
	/// (pre-header, optional components, initial vocabulary), one line per
	/// item indented by depth with its octet offset, each name and string
	/// marked literal or indexed (with its table and index) and with its
	/// encoding, then a summary by category and the size of every vocabulary
	/// table at the end.
	///
	/// The walk reads the document the way FastInfosetParser does, with the
	/// library's bit reader, primitive decoder and document vocabulary, and
	/// fails on the same faults with the same exceptions; what was listed
	/// before a fault stays listed, and offset() tells where it was met.
{
public:
	static const std::size_t MAX_DEPTH = 10000;
		/// The deepest nesting listed, the parser's default limit.

	DocumentDumper(std::ostream& out, const Ixor::FastInfoset::FastInfosetParser& loader);
		/// The external vocabulary a document names is the one that loader
		/// was given in advance, or opened as loader allows; the caller
		/// keeps loader.
	~DocumentDumper();

	void dump(const char* data, std::size_t size);
		/// Lists the document in the memory block.

	Poco::UInt64 offset() const;
		/// The octet at which the walk stands, or stopped.

private:
	DocumentDumper(const DocumentDumper&);
	DocumentDumper& operator = (const DocumentDumper&);

	typedef Ixor::FastInfoset::BitStreamReader Reader;
	typedef Ixor::FastInfoset::DocumentVocabulary DocumentVocabulary;

	struct Text
		/// A string as read: its text and how it was coded.
	{
		std::string  value;
		std::string  how;
		unsigned int algorithm = 0;
		bool         literal = false;
	};

	struct Name
		/// A qualified name as read.
	{
		std::string qname;
		std::string uri;
		std::string how;
		bool        literal = false;
	};

	// Header
	void dumpHeader(Reader& r, const char* data, std::size_t size);
	void dumpInitialVocabulary(Reader& r, const char* data, std::size_t size);
	void listTable(const std::string& label, DocumentVocabulary::ID id, std::size_t from);
	void listNames(const std::string& label, bool element, std::size_t from);
	void dumpHeaderParts(Reader& r, const Ixor::FastInfoset::Decoder::OpenHeaderParts& parts);
	void dumpDeclarations(Reader& r, int idBits, unsigned char itemId, unsigned char terminator,
		const char* endMessage, const char* unterminatedMessage, void (DocumentDumper::*dumpItem)(Reader&));
	void dumpNotation(Reader& r);
	void dumpUnparsedEntity(Reader& r);

	// Items
	void dumpChildren(Reader& r);
	bool dumpChild(Reader& r, int depth);
	void dumpElement(Reader& r, int depth);
	std::string readNamespace(Reader& r);
	std::string readAttribute(Reader& r);
	void readQualifiedName(Reader& r, bool element, Name& name);
	void dumpCharacterChunk(Reader& r, int depth);
	void dumpComment(Reader& r, int depth);
	void dumpProcessingInstruction(Reader& r, int depth);
	void dumpDocumentTypeDeclaration(Reader& r, int depth);
	void dumpEntityReference(Reader& r, int depth);

	// Strings
	const std::string& readIdentifying(Reader& r, DocumentVocabulary::ID id, std::string& how);
	const std::string& readIdentifying(Reader& r, DocumentVocabulary::ID id, std::string& how, unsigned int& index);
	void readNonIdentifying(Reader& r, DocumentVocabulary::ID id, Text& text);
	void readEncoded(Reader& r, Text& text);
	std::string resolve(DocumentVocabulary::ID id, unsigned int index) const;

	void line(Poco::UInt64 offset, int depth, const std::string& text);
	static Poco::UInt64 bitsAt(const Reader& r);

	std::ostream&      _out;
	const Ixor::FastInfoset::FastInfosetParser& _loader;
	DocumentVocabulary _vocabulary;
	DumpSummary        _summary;
	const Reader*      _pReader;
	Poco::UInt64       _stoppedAt;
	std::string        _octets;
};


} // namespace Fitool


#endif // Fitool_DocumentDumper_INCLUDED
