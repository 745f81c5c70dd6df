//
// Fitool.h
//
// Tool: fitool
// Module: Fitool
//


#ifndef Fitool_Fitool_INCLUDED
#define Fitool_Fitool_INCLUDED


#include "CommandLine.h"
#include "Poco/Types.h"
#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>


namespace Ixor {
namespace FastInfoset {
	class VocabularyBuilder;
} }


namespace Fitool {


class InputFile;


POCO_DECLARE_EXCEPTION(, NotFastInfosetException, Poco::Exception)
	/// "Not Fast Infoset": XML text given to a command that reads Fast
	/// Infoset.

POCO_DECLARE_EXCEPTION(, NotXMLException, Poco::Exception)
	/// "Not XML text": Fast Infoset given to a command that reads XML.

POCO_DECLARE_EXCEPTION(, DataAfterDocumentException, Poco::Exception)
	/// "Trailing data": octets after a document where one document is read.

POCO_DECLARE_EXCEPTION(, NotVocabularyException, Poco::Exception)
	/// "Not a vocabulary": a --vocabulary FILE that names no URI.


class Fitool
	/// One run of the fitool command: reads the arguments, runs the command
	/// on each input and turns every failure into an exit status and one
	/// line on the error stream.
{
public:
	enum ExitStatus
	{
		EXIT_DONE = 0,
		EXIT_BAD_DOCUMENT = 1,
			/// A document that cannot be read or converted, or a file that
			/// cannot be opened or written.
		EXIT_BAD_USAGE = 2
	};

	Fitool(std::ostream& out, std::ostream& err);

	int run(const std::vector<std::string>& arguments);

	static bool looksLikeFastInfoset(const std::string& firstOctets);
		/// True when the octets start with the Fast Infoset identification
		/// (E0 00), directly or after an XML declaration as pre-header.

	static bool looksLikeXML(const std::string& firstOctets);
		/// True when the octets start like XML text: '<' after an optional
		/// byte order mark and white space, or UTF-16.

	static std::string outputName(const std::string& input, bool toFastInfoset, const std::string& folder);
		/// The output for an input when several are converted: NAME.fi for
		/// NAME.xml, else the input's name and ".fi" (NAME.xml for NAME.fi,
		/// else NAME.fi.xml for decoding), beside the input or in folder.

	static std::string vocabularyURI(const Ixor::FastInfoset::VocabularyBuilder& builder, const std::string& output);
		/// "urn:fitool:vocabulary:NAME:DIGEST" for a vocabulary that the
		/// builder gives and vocab writes to output: NAME is the output's
		/// file name without extension (left out with its colon for standard
		/// output), DIGEST 16 hexadecimal digits of the SHA-256 of the
		/// vocabulary document without URI.

	static std::string version();
		/// "fitool 1.0.0 (Ixor FastInfoset 1.0.0, POCO 1.11.0)".

private:
	struct Target
		/// Where a conversion writes.
	{
		std::string path;    // the output, or the folder when derived
		bool        derived; // the name comes from the input's name
	};

	int runCommand(const CommandLine& commandLine);
	int attempt(const std::function<void()>& step);
	void convert(const CommandLine& commandLine, const std::string& inputPath, const Target& target);
	void encode(InputFile& input, const std::string& output, bool replace, const CommandLine& commandLine);
	void decode(InputFile& input, const std::string& output, bool replace);
	void check(const std::string& inputPath);
	void dump(const CommandLine& commandLine);
	std::size_t dumpDocument(const char* data, std::size_t available, const Transcoder::DecodeOptions& options);
		/// Lists the document at the start of data; returns its size.
	void forEachDocument(InputFile& input, const std::function<void()>& readOne);
		/// Calls readOne for the document at the input's position, and
		/// again for each that follows with --multiple; without it, octets
		/// after the first document throw DataAfterDocumentException.
	static std::string documentName(const std::string& inputName, int index, Poco::UInt64 start);
		/// How messages name a document after the first of an input.
	void stats(const CommandLine& commandLine);
	void vocab(const CommandLine& commandLine);
	void loadVocabulary(const CommandLine& commandLine);
		/// Reads --vocabulary FILE into the options, with the tables that
		/// the command's directions take.
	std::string vocabularyAdvice(const Ixor::Exception& exc) const;
		/// What to add to the message of a document refused for the
		/// vocabulary it names.
	void expectFastInfoset(InputFile& input);
	void expectXML(InputFile& input, const char* command);
	void report(InputFile& input, Poco::UInt64 written, const std::string& output);

	std::ostream& _out;
	std::ostream& _err;
	std::string   _subject;     // the file that a failure concerns
	std::string   _whereNote;   // where in it, when known
	bool          _quiet;
	bool          _verbose;
	CommandLine::Command      _command;
	Transcoder::EncodeOptions _encodeOptions;
	Transcoder::DecodeOptions _decodeOptions;
	std::unique_ptr<Ixor::FastInfoset::DocumentVocabulary> _pWritingVocabulary;   // --vocabulary, map tables
	std::unique_ptr<Ixor::FastInfoset::DocumentVocabulary> _pReadingVocabulary;   // the same, vector tables
};


} // namespace Fitool


#endif // Fitool_Fitool_INCLUDED
