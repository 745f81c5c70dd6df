//
// CommandLine.h
//
// Tool: fitool
// Module: CommandLine
//


#ifndef Fitool_CommandLine_INCLUDED
#define Fitool_CommandLine_INCLUDED


#include "Transcoder.h"
#include "Poco/Util/OptionException.h"
#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>


namespace Fitool {


POCO_DECLARE_EXCEPTION(, UsageException, Poco::Util::OptionException)
	/// Bad usage that is not about one option: an unknown command, a
	/// missing or extra input.


class CommandLine
	/// The arguments of one fitool run: a command, its options (parsed with
	/// the host's option processor, Unix style: "--name value", "--name=value",
	/// "-o value") and its inputs.
{
public:
	enum Command
	{
		NONE,
		ENCODE,
		DECODE,
		CONVERT,
		DUMP,
		STATS,
		CHECK,
		VOCAB
	};

	enum Verbosity
	{
		QUIET,    // no progress line, no warnings
		NORMAL,
		VERBOSE   // a line per file on what was done
	};

	struct VocabularyOptions
		/// What vocab builds.
	{
		std::string uri;
			/// Empty: one made from the output's name and the content.
		std::size_t maxAttributeValues;
		std::size_t maxCharacterChunks;
		std::size_t maxStringLength;
			/// VocabularyBuilder's limits, its defaults unless given.
	};

	explicit CommandLine(const std::vector<std::string>& arguments);
		/// Throws Poco::Util::OptionException or UsageException for bad
		/// usage.

	Command command() const;
	bool help() const;
	bool version() const;

	const std::vector<std::string>& inputs() const;
		/// {"-"} (standard input) unless given. Only encode, decode,
		/// convert, check and vocab take more than one.

	const std::string& output() const;
		/// Empty (standard output) unless given.

	bool force() const;
		/// -f: write Fast Infoset to a terminal, replace existing outputs.

	Verbosity verbosity() const;
		/// -q and -v; the last one given counts.

	const Transcoder::EncodeOptions& encodeOptions() const;
	const Transcoder::DecodeOptions& decodeOptions() const;

	const std::string& vocabularyPath() const;
		/// --vocabulary FILE: empty unless given.

	const VocabularyOptions& vocabularyOptions() const;

	static void printHelp(std::ostream& out, Command command);
		/// The usage of fitool (NONE) or of one command.

	static std::string commandName(Command command);

	static bool takesVocabulary(Command command);
		/// Whether the command takes --vocabulary FILE.

private:
	std::vector<std::string>::const_iterator readCommand(const std::vector<std::string>& arguments);
	void readOption(const std::string& name, const std::string& value);
	static std::size_t readCount(const std::string& name, const std::string& value);

	Command                   _command;
	bool                      _help;
	bool                      _version;
	std::vector<std::string>  _inputs;
	std::string               _output;
	bool                      _force;
	Verbosity                 _verbosity;
	Transcoder::EncodeOptions _encodeOptions;
	Transcoder::DecodeOptions _decodeOptions;
	std::string               _vocabularyPath;
	VocabularyOptions         _vocabularyOptions;
};


} // namespace Fitool


#endif // Fitool_CommandLine_INCLUDED
