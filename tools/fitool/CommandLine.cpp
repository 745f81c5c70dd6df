#include "CommandLine.h"
#include "Poco/NumberParser.h"
#include "Poco/Util/HelpFormatter.h"
#include "Poco/Util/Option.h"
#include "Poco/Util/OptionProcessor.h"
#include "Poco/Util/OptionSet.h"
#include <ostream>


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
		{CommandLine::ENCODE, "encode", "[IN|-] [-o OUT] [options]",
			"Converts XML text to Fast Infoset."},
		{CommandLine::DECODE, "decode", "[IN|-] [-o OUT] [options]",
			"Converts Fast Infoset to XML text."},
		{CommandLine::CONVERT, "convert", "IN [-o OUT] [options]",
			"Converts in the direction that the input's first octets call for: Fast Infoset "
			"(with or without the \"<?xml encoding='finf'?>\" pre-header) becomes XML text, "
			"anything else is read as XML text. Takes the options of both directions."},
		{CommandLine::DUMP, "dump", "IN",
			"Lists a Fast Infoset document: the header, one line per item with its octet offset, "
			"how each name and string is coded (literal or indexed, table and index, encoding), "
			"octets and counts by category, and the size of each vocabulary table at the end."},
		{CommandLine::STATS, "stats", "IN.xml [options]",
			"Compares the sizes of an XML document and its Fast Infoset form (with the given "
			"options), both also gzip'd, and the times to parse, encode and decode them."}
	};


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
		if (command != CommandLine::DUMP && command != CommandLine::STATS)
			options.addOption(Option("output", "o", "Writes to OUT instead of standard output; a failed run leaves no OUT behind.").argument("OUT"));
		if (encodes)
		{
			options.addOption(Option("strip-whitespace", "", "Drops ignorable whitespace (between elements)."));
			options.addOption(Option("max-indexed-length", "", "Indexes attribute values, text, comments and processing "
				"instruction data of at most N octets, so that they repeat as small indexes (default 16).").argument("N"));
			options.addOption(Option("xml-declaration", "", "Starts the document with the \"<?xml encoding='finf'?>\" pre-header."));
		}
		if (decodes)
		{
			options.addOption(Option("pretty", "", "Indents the XML text."));
			options.addOption(Option("declaration", "", "Starts the XML text with an XML declaration."));
		}
		if (decodes || command == CommandLine::DUMP)
		{
			options.addOption(Option("no-external-vocabularies", "", "Refuses documents that name an external vocabulary "
				"instead of opening it (a document can name any file or URL)."));
		}
	}
}


CommandLine::CommandLine(const std::vector<std::string>& arguments):
	_command(NONE),
	_help(false),
	_version(false),
	_input("-")
{
	std::vector<std::string>::const_iterator it = readCommand(arguments);
	OptionSet options;
	addOptions(_command, options);
	Poco::Util::OptionProcessor processor(options);
	processor.setUnixStyle(true);
	bool haveInput = false;
	for (; it != arguments.end(); ++it)
	{
		std::string name;
		std::string value;
		if (processor.process(*it, name, value))
		{
			// An option whose value is the next argument comes back empty
			// first.
			if (!name.empty()) readOption(name, value);
			continue;
		}
		if (_command == NONE) throw UsageException("unknown command", *it);
		if (haveInput) throw UsageException("more than one input", *it);
		_input = *it;
		haveInput = true;
	}
	processor.checkRequired();
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
	else if (name == "strip-whitespace") _encodeOptions.stripWhitespace = true;
	else if (name == "xml-declaration") _encodeOptions.xmlDeclaration = true;
	else if (name == "pretty") _decodeOptions.pretty = true;
	else if (name == "declaration") _decodeOptions.declaration = true;
	else if (name == "no-external-vocabularies") _decodeOptions.loadExternalVocabularies = false;
	else if (name == "max-indexed-length")
	{
		int length = 0;
		if (!Poco::NumberParser::tryParse(value, length) || length < 0)
			throw Poco::Util::InvalidArgumentException("--max-indexed-length takes a number from 0 up", value);
		_encodeOptions.maxIndexedLength = length;
	}
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


const std::string& CommandLine::input() const
{
	return _input;
}


const std::string& CommandLine::output() const
{
	return _output;
}


const Transcoder::EncodeOptions& CommandLine::encodeOptions() const
{
	return _encodeOptions;
}


const Transcoder::DecodeOptions& CommandLine::decodeOptions() const
{
	return _decodeOptions;
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
		formatter.setFooter("IN defaults to standard input (also \"-\"). Exit status: 0 done, 1 bad document or file, 2 bad usage.");
		formatter.format(out);
		return;
	}
	formatter.setCommand("fitool");
	formatter.setUsage("COMMAND [options] [IN|-] [-o OUT]");
	std::string header = "Converts XML text to Fast Infoset (ITU-T X.891) and back, and shows what a Fast Infoset document holds.\n\nCommands:\n";
	for (const CommandInfo& info: COMMANDS) header += std::string("  ") + info.name + std::string(10 - std::string(info.name).size(), ' ') + info.usage + "\n";
	formatter.setHeader(header);
	formatter.setFooter("Run \"fitool COMMAND --help\" for what a command does and its options. Exit status: 0 done, "
		"1 bad document or file (one line on standard error names the file and the fault), 2 bad usage.");
	formatter.format(out);
}


} // namespace Fitool
