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
#include <iosfwd>
#include <string>
#include <vector>


namespace Fitool {


class InputFile;


class Fitool
	/// One run of the fitool command: reads the arguments, runs the command
	/// and turns every failure into an exit status and one line on the error
	/// stream.
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

	static std::string version();
		/// "fitool 1.0.0 (Ixor FastInfoset 1.0.0, POCO 1.11.0)".

private:
	void runCommand(const CommandLine& commandLine);
	void encode(InputFile& input, const std::string& output, const Transcoder::EncodeOptions& options);
	void decode(InputFile& input, const std::string& output, const Transcoder::DecodeOptions& options);
	void dump(InputFile& input, bool loadExternalVocabularies);
	void stats(InputFile& input, const Transcoder::EncodeOptions& options);

	std::ostream& _out;
	std::ostream& _err;
	std::string   _subject;     // the file that a failure concerns
	std::string   _whereNote;   // where in it, when known
};


} // namespace Fitool


#endif // Fitool_Fitool_INCLUDED
