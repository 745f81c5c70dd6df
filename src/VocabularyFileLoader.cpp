#include "VocabularyFileLoader.h"
#include "HeaderListener.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Poco/NullStream.h"
#include "Poco/NumberFormatter.h"
#include "Poco/Path.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/SAXParser.h"
#include "Poco/String.h"
#include "Poco/URI.h"
#include <cerrno>
#include <cstring>
#include <sstream>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>


namespace Ixor {
namespace FastInfoset {


namespace
{
	std::string pathOf(const std::string& uri)
		/// The local file a URI names: a file URI, or a plain path.
	{
		Ixor::URI parsed;
		try
		{
			parsed = Ixor::URI(uri);
		}
		catch (const Ixor::Exception&)
		{
			return uri;
		}
		if (parsed.getScheme().empty()) return uri;
		if (parsed.getScheme() == "file") return parsed.getPath();
		throw FISException("External vocabulary is not a local file", uri);
	}


	class File
		/// A file descriptor that closes itself.
	{
	public:
		explicit File(int fd): _fd(fd) {}
		~File() { if (_fd >= 0) ::close(_fd); }
		int fd() const { return _fd; }

	private:
		File(const File&);
		File& operator = (const File&);

		int _fd;
	};


	std::string readRegularFile(const std::string& uri, Ixor::UInt64 maxSize)
		/// The content of the regular file uri names. Anything else fails
		/// before it is opened (a FIFO or device could block or have effects
		/// when opened); the open does not wait, and what was opened is
		/// checked again, in case the path changed in between.
	{
		const std::string path = pathOf(uri);
		struct stat status;
		if (::stat(path.c_str(), &status) != 0)
			throw FISException("Cannot open external vocabulary", uri + ": " + std::strerror(errno));
		if (!S_ISREG(status.st_mode)) throw FISException("External vocabulary is not a regular file", uri);
		File file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
		if (file.fd() < 0) throw FISException("Cannot open external vocabulary", uri + ": " + std::strerror(errno));
		if (::fstat(file.fd(), &status) != 0 || !S_ISREG(status.st_mode))
			throw FISException("External vocabulary is not a regular file", uri);

		const std::string tooLarge = "External vocabulary is larger than "
			+ Poco::NumberFormatter::format(maxSize) + " octets (FastInfosetParser::setMaxExternalVocabularySize)";
		if (static_cast<Ixor::UInt64>(status.st_size) > maxSize) throw FISException(tooLarge, uri);
		std::string content;
		char buffer[65536];
		for (;;)
		{
			const ssize_t count = ::read(file.fd(), buffer, sizeof(buffer));
			if (count == 0) break;
			if (count < 0)
			{
				if (errno == EINTR) continue;
				throw FISException("Cannot read external vocabulary", uri + ": " + std::strerror(errno));
			}
			// The file may have grown since it was looked at.
			if (content.size() + static_cast<std::size_t>(count) > maxSize) throw FISException(tooLarge, uri);
			content.append(buffer, static_cast<std::size_t>(count));
		}
		return content;
	}
}


DocumentVocabulary VocabularyFileLoader::forReading(const DocumentVocabulary& source)
	/// The writer's tables are hash tables of fixed capacity that find old
	/// values again. Entries are copied in index order.
{
	DocumentVocabulary result(source.getURI(), DocumentVocabulary::VOC_VECTOR);
	bool found = false;
	for (int id = DocumentVocabulary::PREFIX; id <= DocumentVocabulary::CONTENT_CHARACTER_CHUNK; ++id)
	{
		const DocumentVocabulary::ID table = static_cast<DocumentVocabulary::ID>(id);
		const std::size_t size = source.vocabulary(table)->size();
		for (std::size_t i = result.vocabulary(table)->size(); i < size; ++i)
		{
			result.index(table, source.value(table, static_cast<unsigned int>(i)), found);
		}
	}
	for (std::size_t i = 1; i < source.elementVocabulary()->size(); ++i)
	{
		result.elementVocabulary()->index(source.elementVocabulary()->value(static_cast<unsigned int>(i)), found);
	}
	for (std::size_t i = 1; i < source.attributeVocabulary()->size(); ++i)
	{
		result.attributeVocabulary()->index(source.attributeVocabulary()->value(static_cast<unsigned int>(i)), found);
	}
	result.restrictedAlphabets() = source.restrictedAlphabets();
	return result;
}


VocabularyFileLoader::VocabularyFileLoader(const FastInfosetParser& parser):
	_parser(parser)
{
}


bool VocabularyFileLoader::load(const std::string& uri, DocumentVocabulary& vocabulary)
{
	// Each document starts from an untouched copy of the vocabulary given in
	// advance: what earlier documents added does not carry over.
	if (_parser._pGivenVocabulary && uri == _parser._pGivenVocabulary->getURI())
	{
		vocabulary = *_parser._pGivenVocabulary;
		return false;
	}
	if (!_parser._loadExternalVocabularies) throw FISException(HeaderListener::LOADING_DISABLED, uri);
	// A vocabulary document may name an external vocabulary itself; one that
	// names itself, directly or through others, must not recurse forever.
	if (_parser._vocabularyNesting >= MAX_NESTING) throw FISException("External vocabularies nested too deeply", uri);

	const std::string content = readRegularFile(uri, _parser._maxExternalVocabularySize);
	std::istringstream in(content);
	Ixor::XML::InputSource source(in);
	try
	{
		if (Ixor::Path(Ixor::toLower(pathOf(uri))).getExtension() == "xml")
		{
			Ixor::NullOutputStream nowhere;
			FastInfosetWriter writer(nowhere, false, DocumentVocabulary::VOC_MAP);
			Ixor::XML::SAXParser parser;
			parser.setFeature(Ixor::XML::XMLReader::FEATURE_NAMESPACES, true);
			parser.setFeature(Ixor::XML::XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
			parser.setContentHandler(&writer);
			parser.setDTDHandler(&writer);
			parser.setProperty(Ixor::XML::XMLReader::PROPERTY_LEXICAL_HANDLER, static_cast<Ixor::XML::LexicalHandler*>(&writer));
			parser.parse(&source);
			vocabulary = forReading(writer.getDocumentVocabulary());
		}
		else
		{
			FastInfosetParser parser(DocumentVocabulary::VOC_VECTOR);
			parser.setLoadExternalVocabularies(true);
			parser.setMaxExternalVocabularySize(_parser._maxExternalVocabularySize);
			parser.setAmplificationThreshold(_parser._amplificationThreshold);
			parser.setMaxAmplification(_parser._maxAmplification);
			parser._vocabularyNesting = _parser._vocabularyNesting + 1;
			parser.parseMemoryNP(content.data(), content.size());
			vocabulary = parser.vocabulary();
		}
	}
	catch (const Ixor::Exception& exc)
	{
		// Faults of the vocabulary's document, whatever reported them, are
		// faults of this document's external vocabulary.
		throw FISException("Cannot read external vocabulary " + uri + ": " + exc.displayText());
	}
	return true;
}


} } // namespace Ixor::FastInfoset
