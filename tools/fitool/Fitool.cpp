#include "Fitool.h"
#include "DocumentDumper.h"
#include "InputFile.h"
#include "OutputFile.h"
#include "SizeAndSpeed.h"
#include "Ixor/FastInfoset/FastInfoset.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Poco/Environment.h"
#include "Poco/NumberFormatter.h"
#include <ostream>
#include <stdexcept>


using Poco::NumberFormatter;


namespace Fitool {


namespace
{
	const std::size_t SNIFF_LENGTH = 512;   // enough for a pre-header
}


Fitool::Fitool(std::ostream& out, std::ostream& err):
	_out(out),
	_err(err)
{
}


int Fitool::run(const std::vector<std::string>& arguments)
{
	try
	{
		const CommandLine commandLine(arguments);
		if (commandLine.version())
		{
			_out << version() << '\n';
			return EXIT_DONE;
		}
		if (commandLine.help() || commandLine.command() == CommandLine::NONE)
		{
			CommandLine::printHelp(commandLine.help() ? _out : _err, commandLine.command());
			return commandLine.help() ? EXIT_DONE : EXIT_BAD_USAGE;
		}
		runCommand(commandLine);
		return EXIT_DONE;
	}
	catch (const Poco::Util::OptionException& exc)
	{
		_out.flush();
		_err << "fitool: " << exc.displayText() << "\nRun \"fitool --help\" for the usage.\n";
		return EXIT_BAD_USAGE;
	}
	catch (const Ixor::Exception& exc)
	{
		_out.flush();
		_err << "fitool: " << _subject << ": " << exc.displayText() << _whereNote << '\n';
	}
	catch (const std::exception& exc)
	{
		// Bad indexes can surface from the standard library's containers.
		_out.flush();
		_err << "fitool: " << _subject << ": " << exc.what() << _whereNote << '\n';
	}
	return EXIT_BAD_DOCUMENT;
}


void Fitool::runCommand(const CommandLine& commandLine)
{
	_subject = commandLine.input();
	InputFile input(commandLine.input());
	switch (commandLine.command())
	{
	case CommandLine::ENCODE:
		encode(input, commandLine.output(), commandLine.encodeOptions());
		break;
	case CommandLine::DECODE:
		decode(input, commandLine.output(), commandLine.decodeOptions());
		break;
	case CommandLine::CONVERT:
		if (looksLikeFastInfoset(input.peek(SNIFF_LENGTH))) decode(input, commandLine.output(), commandLine.decodeOptions());
		else encode(input, commandLine.output(), commandLine.encodeOptions());
		break;
	case CommandLine::DUMP:
		dump(input, commandLine.decodeOptions().loadExternalVocabularies);
		break;
	case CommandLine::STATS:
		stats(input, commandLine.encodeOptions());
		break;
	case CommandLine::NONE:
		break;
	}
}


void Fitool::encode(InputFile& input, const std::string& output, const Transcoder::EncodeOptions& options)
{
	_subject = output;
	OutputFile out(output);
	_subject = input.name();
	input.showProgress("encoding " + input.name());
	// The host's XML parser tells line and column itself.
	Transcoder::encode(input.stream(), out.stream(), options);
	_subject = out.name();
	out.commit();
}


void Fitool::decode(InputFile& input, const std::string& output, const Transcoder::DecodeOptions& options)
{
	_subject = output;
	OutputFile out(output);
	_subject = input.name();
	input.showProgress("decoding " + input.name());
	try
	{
		Transcoder::decode(input.stream(), out.stream(), options);
	}
	catch (const Ixor::FastInfoset::FISException&)
	{
		// The parser's own messages say at which octet.
		throw;
	}
	catch (...)
	{
		// The parser reads ahead in blocks: the fault lies in what it has
		// taken so far.
		_whereNote = " (at or before octet " + NumberFormatter::format(input.octetsRead()) + ")";
		throw;
	}
	_subject = out.name();
	out.commit();
}


void Fitool::dump(InputFile& input, bool loadExternalVocabularies)
{
	_subject = input.name();
	input.showProgress("reading " + input.name());
	const std::string document = input.readAll();
	DocumentDumper dumper(_out, loadExternalVocabularies);
	try
	{
		dumper.dump(document.data(), document.size());
	}
	catch (...)
	{
		_whereNote = " (at octet " + NumberFormatter::format(dumper.offset()) + ")";
		throw;
	}
}


void Fitool::stats(InputFile& input, const Transcoder::EncodeOptions& options)
{
	_subject = input.name();
	const std::string xml = input.readAll();
	SizeAndSpeed sizeAndSpeed(xml, options);
	sizeAndSpeed.print(_out, input.name());
}


bool Fitool::looksLikeFastInfoset(const std::string& firstOctets)
{
	static const std::string IDENTIFICATION("\xE0\x00", 2);
	if (firstOctets.compare(0, 2, IDENTIFICATION) == 0) return true;
	// The pre-header is an XML declaration that ends at its first '>'.
	if (firstOctets.compare(0, 5, "<?xml") != 0) return false;
	const std::string::size_type end = firstOctets.find('>');
	return end != std::string::npos && firstOctets.compare(end + 1, 2, IDENTIFICATION) == 0;
}


std::string Fitool::version()
{
	const Poco::UInt32 poco = Poco::Environment::libraryVersion();
	return std::string("fitool ") + FITOOL_VERSION + " (Ixor FastInfoset " + FITOOL_VERSION + ", POCO "
		+ NumberFormatter::format(poco >> 24) + "." + NumberFormatter::format((poco >> 16) & 0xFF) + "."
		+ NumberFormatter::format((poco >> 8) & 0xFF) + ")";
}


} // namespace Fitool
