#include "CommandLine.h"
#include "Ixor/FastInfoset/VocabularyBuilder.h"
#include "Poco/NumberParser.h"
#include "Poco/Util/HelpFormatter.h"
#include "Poco/Util/Option.h"
#include "Poco/Util/OptionProcessor.h"
#include "Poco/Util/OptionSet.h"
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <ostream>


using Ixor::FastInfoset::VocabularyBuilder;
using Poco::Util::Option;
using Poco::Util::OptionSet;


namespace Fitool {


POCO_IMPLEMENT_EXCEPTION(UsageException, Poco::Util::OptionException, "Bad usage")


namespace
{
	struct CommandInfo
	{
		CommandLine::Command command;
		const char* name;
		const char* usage;
		const char* summary;
	};

	const CommandInfo COMMANDS[] =
	{
		{CommandLine::ENCODE, "encode", "[options] [FILE...]",
			"Converts XML text to Fast Infoset."},
		{CommandLine::DECODE, "decode", "[options] [FILE...]",
			"Converts Fast Infoset to well-formed XML text."},
		{CommandLine::CONVERT, "convert", "[options] [FILE...]",
			"Converts in the direction that each input's first octets call for: Fast Infoset "
			"(with or without the \"<?xml encoding='finf'?>\" pre-header) becomes XML text, "
			"anything else is read as XML text. Takes the options of both directions."},
		{CommandLine::DUMP, "dump", "[options] [FILE]",
			"Lists a Fast Infoset document: the header, one line per item with its octet offset, "
			"how each name and string is coded (literal or indexed, table and index, encoding), "
			"octets and counts by category, and the size of each vocabulary table at the end."},
		{CommandLine::STATS, "stats", "[options] [FILE]",
			"Compares the sizes of an XML document and its Fast Infoset form (with the given "
			"options), both also gzip'd, and the times to parse, encode and decode them."},
		{CommandLine::CHECK, "check", "[options] [FILE...]",
			"Reads each Fast Infoset document completely, with the library's limits, and prints "
			"nothing when it is sound; a faulty one gets one line on standard error naming the "
			"file and the fault."},
		{CommandLine::VOCAB, "vocab", "[options] [SAMPLE...]",
			"Builds a vocabulary from sample documents of a kind (XML text or Fast Infoset): their "
			"names and the strings that save most. Documents that encode --vocabulary writes name it "
			"and carry only what it lacks; decode, check and dump read them with the same --vocabulary."}
	};


	const char* const INPUT_NOTE = "With no FILE, or when FILE is -, reads standard input.";

	const char* const CONVERSION_NOTE =
		"One input is written to standard output, or to OUT with -o OUT (replaced when it exists). "
		"Several inputs, or -o naming a folder, write each FILE beside it, or into the folder: "
		"encode writes NAME.fi for NAME.xml (or FILE.fi), decode NAME.xml for NAME.fi (or "
		"FILE.xml); such an output that exists already is replaced only with -f. Standard input "
		"cannot be one of several inputs. encode does not write to a terminal without -f.";

	const char* const VOCABULARY_NOTE =
		"With no SAMPLE, or when SAMPLE is -, reads standard input. "
		"The vocabulary, a Fast Infoset document, goes to standard output or to OUT with -o OUT (replaced "
		"when it exists), not to a terminal without -f. Without --uri its URI is "
		"urn:fitool:vocabulary:NAME:DIGEST, NAME being OUT's name without extension and DIGEST "
		"changing with the content, so that documents are never read with another vocabulary than "
		"the one they were written with.";

	const char* const VOCABULARY_STATUS_NOTE =
		"Exit status: 0 done, 1 a sample that cannot be read (then nothing is written) or an output that "
		"cannot be written, 2 bad usage.";

	const char* const STATUS_NOTE =
		"Exit status: 0 done, 1 a bad document or a file that cannot be read or written (the "
		"other files are still done), 2 bad usage.";


	const CommandInfo* find(CommandLine::Command command)
	{
		for (const CommandInfo& info: COMMANDS)
		{
			if (info.command == command) return &info;
		}
		return 0;
	}


	void addOptions(CommandLine::Command command, OptionSet& options)
	{
		options.addOption(Option("help", "h", "Shows this help."));
		if (command == CommandLine::NONE)
		{
			options.addOption(Option("version", "", "Shows the versions of fitool and its libraries."));
			return;
		}
		const bool encodes = command == CommandLine::ENCODE || command == CommandLine::CONVERT || command == CommandLine::STATS;
		const bool decodes = command == CommandLine::DECODE || command == CommandLine::CONVERT;
		const bool converts = command == CommandLine::ENCODE || command == CommandLine::DECODE || command == CommandLine::CONVERT;
		if (converts)
		{
			options.addOption(Option("output", "o", "Writes to OUT instead of standard output; when OUT is a folder, "
				"the outputs go into it. A failed run leaves no OUT behind.").argument("OUT"));
			options.addOption(Option("force", "f", command == CommandLine::DECODE ? "Replaces outputs that exist."
				: "Writes Fast Infoset to a terminal too, and replaces outputs that exist."));
		}
		if (command == CommandLine::VOCAB)
		{
			options.addOption(Option("output", "o", "Writes the vocabulary to OUT instead of standard output. "
				"A failed run leaves no OUT behind.").argument("OUT"));
			options.addOption(Option("force", "f", "Writes the vocabulary to a terminal too."));
			options.addOption(Option("uri", "", "The URI by which documents name the vocabulary.").argument("URI"));
			options.addOption(Option("max-attribute-values", "", "Takes at most N attribute values (default "
				+ std::to_string(VocabularyBuilder::DEFAULT_MAX_ATTRIBUTE_VALUES) + ").").argument("N"));
			options.addOption(Option("max-character-chunks", "", "Takes at most N text chunks (default "
				+ std::to_string(VocabularyBuilder::DEFAULT_MAX_CHARACTER_CHUNKS) + ").").argument("N"));
			options.addOption(Option("max-string-length", "", "Takes attribute values and text chunks of at most N "
				"octets (default " + std::to_string(VocabularyBuilder::DEFAULT_MAX_STRING_LENGTH) + ").").argument("N"));
		}
		if (command != CommandLine::STATS)
			options.addOption(Option("quiet", "q", "Shows no progress line and no warnings."));
		if (converts)
			options.addOption(Option("verbose", "v", "Tells on standard error what was done per file: sizes and ratio."));
		if (command == CommandLine::CHECK)
			options.addOption(Option("verbose", "v", "Prints per document its size and counts of elements, attributes, "
				"text, comments and processing instructions."));
		if (command == CommandLine::VOCAB)
			options.addOption(Option("verbose", "v", "Tells on standard error the vocabulary's URI, the samples read "
				"and the octets written."));
		if (CommandLine::takesVocabulary(command))
		{
			const std::string vocabulary = command == CommandLine::ENCODE
				? "Writes documents that name the vocabulary in FILE (made by fitool vocab) and carry only what it lacks; "
					"read them with the same --vocabulary."
				: command == CommandLine::CONVERT
				? "Encodes documents that name the vocabulary in FILE (made by fitool vocab), and decodes those that "
					"name it with it, given in advance."
				: "Reads documents that name the vocabulary in FILE (made by fitool vocab) with it, given in advance: "
					"nothing is opened for it.";
			options.addOption(Option("vocabulary", "", vocabulary).argument("FILE"));
		}
		if (encodes)
		{
			options.addOption(Option("strip-whitespace", "", "Drops ignorable whitespace (between elements)."));
			options.addOption(Option("max-indexed-length", "", "Indexes attribute values, text, comments and processing "
				"instruction data of at most N octets, so that they repeat as small indexes (default "
				+ std::to_string(Ixor::FastInfoset::FastInfosetWriter::DEFAULT_MAX_INDEXED_STRING_LENGTH) + ").").argument("N"));
			options.addOption(Option("xml-declaration", "", "Starts the document with the \"<?xml encoding='finf'?>\" pre-header."));
		}
		if (decodes)
		{
			options.addOption(Option("pretty", "", "Indents the XML text."));
			options.addOption(Option("declaration", "", "Starts the XML text with an XML declaration."));
		}
		if (decodes || command == CommandLine::DUMP || command == CommandLine::CHECK)
		{
			const std::string multiple = command == CommandLine::DUMP ? "Lists a stream of documents, one after the other, each with offsets of its own."
				: command == CommandLine::CHECK ? "Checks a stream of documents in each input, one after the other."
				: "Reads a stream of documents, one after the other, and writes each as an XML document of its own, in order.";
			options.addOption(Option("multiple", "", multiple + " Without it, octets after the document are an error."));
			options.addOption(Option("load-external-vocabularies", "", "Opens the external vocabulary that a document names, "
				"when it is a regular local file. Without it such a document is refused: a document can name any file."));
			options.addOption(Option("no-external-vocabularies", "", "Refuses documents that name an external vocabulary (the default)."));
			options.addOption(Option("amplification-threshold", "", "Text and names that a document delivers by index may reach "
				"N octets before --max-amplification applies (default 8388608, 8 MiB).").argument("N"));
			options.addOption(Option("max-amplification", "", "Past the threshold, refuses a document that delivers by index "
				"more than F times the octets it has read (default 100).").argument("F"));
		}
	}


	bool parseOctets(const std::string& text, Poco::UInt64& octets)
	{
		// Digits only, and no wrap past 2^64 - 1 (the host's number parser
		// takes 2^64 for 0).
		if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) return false;
		errno = 0;
		octets = std::strtoull(text.c_str(), 0, 10);
		return errno != ERANGE;
	}


	bool takesSeveralInputs(CommandLine::Command command)
	{
		return command == CommandLine::ENCODE || command == CommandLine::DECODE || command == CommandLine::CONVERT
			|| command == CommandLine::CHECK || command == CommandLine::VOCAB;
	}
}


CommandLine::CommandLine(const std::vector<std::string>& arguments):
	_command(NONE),
	_help(false),
	_version(false),
	_force(false),
	_verbosity(NORMAL)
{
	_vocabularyOptions.maxAttributeValues = VocabularyBuilder::DEFAULT_MAX_ATTRIBUTE_VALUES;
	_vocabularyOptions.maxCharacterChunks = VocabularyBuilder::DEFAULT_MAX_CHARACTER_CHUNKS;
	_vocabularyOptions.maxStringLength = VocabularyBuilder::DEFAULT_MAX_STRING_LENGTH;
	std::vector<std::string>::const_iterator it = readCommand(arguments);
	OptionSet options;
	addOptions(_command, options);
	Poco::Util::OptionProcessor processor(options);
	processor.setUnixStyle(true);
	for (; it != arguments.end(); ++it)
	{
		std::string name;
		std::string value;
		// "-" is standard input, not an option.
		if (*it != "-" && processor.process(*it, name, value))
		{
			// An option whose value is the next argument comes back empty
			// first.
			if (!name.empty()) readOption(name, value);
			continue;
		}
		if (_command == NONE) throw UsageException("unknown command", *it);
		if (!_inputs.empty() && !takesSeveralInputs(_command)) throw UsageException("more than one input", *it);
		_inputs.push_back(*it);
	}
	processor.checkRequired();
	if (_inputs.empty()) _inputs.push_back("-");
}


std::vector<std::string>::const_iterator CommandLine::readCommand(const std::vector<std::string>& arguments)
{
	if (arguments.empty() || arguments.front().empty() || arguments.front()[0] == '-') return arguments.begin();
	for (const CommandInfo& info: COMMANDS)
	{
		if (arguments.front() == info.name)
		{
			_command = info.command;
			return arguments.begin() + 1;
		}
	}
	throw UsageException("unknown command", arguments.front());
}


void CommandLine::readOption(const std::string& name, const std::string& value)
{
	if (name == "help") _help = true;
	else if (name == "version") _version = true;
	else if (name == "output") _output = value;
	else if (name == "force") _force = true;
	else if (name == "quiet") _verbosity = QUIET;
	else if (name == "verbose") _verbosity = VERBOSE;
	else if (name == "strip-whitespace") _encodeOptions.stripWhitespace = true;
	else if (name == "xml-declaration") _encodeOptions.xmlDeclaration = true;
	else if (name == "pretty") _decodeOptions.pretty = true;
	else if (name == "declaration") _decodeOptions.declaration = true;
	else if (name == "multiple") _decodeOptions.multiple = true;
	else if (name == "load-external-vocabularies") _decodeOptions.loadExternalVocabularies = true;
	else if (name == "no-external-vocabularies") _decodeOptions.loadExternalVocabularies = false;
	else if (name == "amplification-threshold")
	{
		Poco::UInt64 octets = 0;
		if (!parseOctets(value, octets))
			throw Poco::Util::InvalidArgumentException("--amplification-threshold takes a number of octets", value);
		_decodeOptions.amplificationThreshold = octets;
	}
	else if (name == "max-amplification")
	{
		double factor = 0;
		if (!Poco::NumberParser::tryParseFloat(value, factor) || !(factor >= 0) || factor > 1e300)
			throw Poco::Util::InvalidArgumentException("--max-amplification takes a number from 0 up", value);
		_decodeOptions.maxAmplification = factor;
	}
	else if (name == "vocabulary") _vocabularyPath = value;
	else if (name == "uri") _vocabularyOptions.uri = value;
	else if (name == "max-attribute-values") _vocabularyOptions.maxAttributeValues = readCount(name, value);
	else if (name == "max-character-chunks") _vocabularyOptions.maxCharacterChunks = readCount(name, value);
	else if (name == "max-string-length") _vocabularyOptions.maxStringLength = readCount(name, value);
	else if (name == "max-indexed-length")
	{
		int length = 0;
		if (!Poco::NumberParser::tryParse(value, length) || length < 0)
			throw Poco::Util::InvalidArgumentException("--max-indexed-length takes a number from 0 up", value);
		_encodeOptions.maxIndexedLength = length;
	}
}


std::size_t CommandLine::readCount(const std::string& name, const std::string& value)
{
	Poco::UInt64 count = 0;
	if (!parseOctets(value, count) || count > std::numeric_limits<std::size_t>::max())
		throw Poco::Util::InvalidArgumentException("--" + name + " takes a number from 0 up", value);
	return static_cast<std::size_t>(count);
}


CommandLine::Command CommandLine::command() const
{
	return _command;
}


bool CommandLine::help() const
{
	return _help;
}


bool CommandLine::version() const
{
	return _version;
}


const std::vector<std::string>& CommandLine::inputs() const
{
	return _inputs;
}


const std::string& CommandLine::output() const
{
	return _output;
}


bool CommandLine::force() const
{
	return _force;
}


CommandLine::Verbosity CommandLine::verbosity() const
{
	return _verbosity;
}


const Transcoder::EncodeOptions& CommandLine::encodeOptions() const
{
	return _encodeOptions;
}


const Transcoder::DecodeOptions& CommandLine::decodeOptions() const
{
	return _decodeOptions;
}


const std::string& CommandLine::vocabularyPath() const
{
	return _vocabularyPath;
}


const CommandLine::VocabularyOptions& CommandLine::vocabularyOptions() const
{
	return _vocabularyOptions;
}


bool CommandLine::takesVocabulary(Command command)
{
	return command == ENCODE || command == DECODE || command == CONVERT || command == CHECK || command == DUMP;
}


std::string CommandLine::commandName(Command command)
{
	const CommandInfo* pInfo = find(command);
	return pInfo ? pInfo->name : "";
}


void CommandLine::printHelp(std::ostream& out, Command command)
{
	OptionSet options;
	addOptions(command, options);
	Poco::Util::HelpFormatter formatter(options);
	formatter.setUnixStyle(true);
	formatter.setWidth(80);
	const CommandInfo* pInfo = find(command);
	if (pInfo)
	{
		formatter.setCommand(std::string("fitool ") + pInfo->name);
		formatter.setUsage(pInfo->usage);
		formatter.setHeader(pInfo->summary);
		std::string footer = command == VOCAB ? VOCABULARY_NOTE : INPUT_NOTE;
		if (command == ENCODE || command == DECODE || command == CONVERT) footer += std::string(" ") + CONVERSION_NOTE;
		formatter.setFooter(footer + " " + (command == VOCAB ? VOCABULARY_STATUS_NOTE : STATUS_NOTE));
		formatter.format(out);
		return;
	}
	formatter.setCommand("fitool");
	formatter.setUsage("COMMAND [options] [FILE...]");
	std::string header = "Converts XML text to Fast Infoset (ITU-T X.891) and back, checks Fast Infoset documents, shows what they hold and builds vocabularies that documents of a kind share.\n\nCommands:\n";
	for (const CommandInfo& info: COMMANDS) header += std::string("  ") + info.name + std::string(10 - std::string(info.name).size(), ' ') + info.usage + "\n";
	formatter.setHeader(header);
	formatter.setFooter(std::string(INPUT_NOTE) + " Run \"fitool COMMAND --help\" for what a command does and its options. "
		+ STATUS_NOTE + " One line on standard error names the file and the fault.");
	formatter.format(out);
}


} // namespace Fitool
