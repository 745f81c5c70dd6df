#include "Fitool.h"
#include "DocumentCounts.h"
#include "DocumentDumper.h"
#include "InputFile.h"
#include "OutputFile.h"
#include "SizeAndSpeed.h"
#include "TextFormat.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/VocabularyBuilder.h"
#include "Ixor/FastInfoset/VocabularyDocument.h"
#include "Poco/Ascii.h"
#include "Poco/DigestEngine.h"
#include "Poco/Environment.h"
#include "Poco/File.h"
#include "Poco/NumberFormatter.h"
#include "Poco/Path.h"
#include "Poco/SHA2Engine.h"
#include "Poco/SAX/DefaultHandler.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/String.h"
#include <algorithm>
#include <exception>
#include <istream>
#include <ostream>
#include <sstream>
#include <stdexcept>


using Ixor::FastInfoset::DocumentVocabulary;
using Ixor::FastInfoset::VocabularyDocument;
using Poco::NumberFormatter;


namespace Fitool {


POCO_IMPLEMENT_EXCEPTION(NotFastInfosetException, Poco::Exception, "Not Fast Infoset")
POCO_IMPLEMENT_EXCEPTION(NotXMLException, Poco::Exception, "Not XML text")
POCO_IMPLEMENT_EXCEPTION(DataAfterDocumentException, Poco::Exception, "Trailing data")
POCO_IMPLEMENT_EXCEPTION(NotVocabularyException, Poco::Exception, "Not a vocabulary")


namespace
{
	const std::size_t SNIFF_LENGTH = 512;   // enough for a pre-header
	const std::string AFTER_THE_DOCUMENT = "data after the end of the document at octet ";
	// How the parser refuses a document that names a vocabulary it was
	// neither given nor allowed to open.
	const std::string VOCABULARY_NOT_GIVEN = "External vocabulary loading is disabled";


	std::string inputName(const std::string& path)
	{
		return path == "-" ? std::string("(standard input)") : path;
	}


	bool isConversion(CommandLine::Command command)
	{
		return command == CommandLine::ENCODE || command == CommandLine::DECODE || command == CommandLine::CONVERT;
	}
}


Fitool::Fitool(std::ostream& out, std::ostream& err):
	_out(out),
	_err(err),
	_quiet(false),
	_verbose(false),
	_command(CommandLine::NONE)
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
		return runCommand(commandLine);
	}
	catch (const Poco::Util::OptionException& exc)
	{
		_out.flush();
		_err << "fitool: " << exc.displayText() << "\nRun \"fitool --help\" for the usage.\n";
		return EXIT_BAD_USAGE;
	}
}


int Fitool::runCommand(const CommandLine& commandLine)
{
	_quiet = commandLine.verbosity() == CommandLine::QUIET;
	_verbose = commandLine.verbosity() == CommandLine::VERBOSE;
	_command = commandLine.command();
	_encodeOptions = commandLine.encodeOptions();
	_decodeOptions = commandLine.decodeOptions();
	const std::vector<std::string>& inputs = commandLine.inputs();
	const CommandLine::Command command = commandLine.command();
	if (!commandLine.vocabularyPath().empty())
	{
		const int status = attempt([&] { loadVocabulary(commandLine); });
		if (status != EXIT_DONE) return status;
	}
	if (command == CommandLine::DUMP) return attempt([&] { dump(commandLine); });
	if (command == CommandLine::STATS) return attempt([&] { stats(commandLine); });
	if (command == CommandLine::VOCAB) return attempt([&] { vocab(commandLine); });

	Target target{commandLine.output(), false};
	if (isConversion(command))
	{
		const bool intoFolder = !target.path.empty() && target.path != "-" && Poco::File(target.path).exists()
			&& Poco::File(target.path).isDirectory();
		if (inputs.size() > 1 || intoFolder)
		{
			if (!target.path.empty() && !intoFolder) throw UsageException("with several inputs, -o names a folder", target.path);
			if (std::find(inputs.begin(), inputs.end(), "-") != inputs.end())
				throw UsageException("standard input has no name for an output beside it or in a folder; convert it alone, with -o FILE");
			target.derived = true;
		}
	}
	int status = EXIT_DONE;
	for (const std::string& input: inputs)
	{
		if (command == CommandLine::CHECK) status = std::max(status, attempt([&] { check(input); }));
		else status = std::max(status, attempt([&] { convert(commandLine, input, target); }));
		if (status == EXIT_BAD_USAGE) break;
	}
	return status;
}


int Fitool::attempt(const std::function<void()>& step)
{
	_subject.clear();
	_whereNote.clear();
	try
	{
		step();
		return EXIT_DONE;
	}
	catch (const Poco::Util::OptionException& exc)
	{
		_out.flush();
		_err << "fitool: " << exc.displayText() << '\n';
		return EXIT_BAD_USAGE;
	}
	catch (const Ixor::Exception& exc)
	{
		_out.flush();
		const std::string text = exc.displayText();
		// Messages that tell their octet need no estimate.
		_err << "fitool: " << _subject << ": " << text << (text.find("(at octet ") == std::string::npos ? _whereNote : "")
			<< vocabularyAdvice(exc) << '\n';
	}
	catch (const std::exception& exc)
	{
		// Bad indexes can surface from the standard library's containers.
		_out.flush();
		_err << "fitool: " << _subject << ": " << exc.what() << _whereNote << '\n';
	}
	return EXIT_BAD_DOCUMENT;
}


void Fitool::convert(const CommandLine& commandLine, const std::string& inputPath, const Target& target)
{
	_subject = inputName(inputPath);
	InputFile input(inputPath);
	const bool toFastInfoset = commandLine.command() == CommandLine::ENCODE
		|| (commandLine.command() == CommandLine::CONVERT && !looksLikeFastInfoset(input.peek(SNIFF_LENGTH)));
	const std::string output = target.derived ? outputName(inputPath, toFastInfoset, target.path) : target.path;
	const bool replace = !target.derived || commandLine.force();
	if (toFastInfoset) encode(input, output, replace, commandLine);
	else decode(input, output, replace);
}


void Fitool::encode(InputFile& input, const std::string& output, bool replace, const CommandLine& commandLine)
{
	expectXML(input, "decode");
	_subject = output.empty() ? "(standard output)" : output;
	OutputFile out(output, replace);
	if (out.isTerminal() && !commandLine.force())
		throw UsageException("Fast Infoset is not written to a terminal; redirect the output, give -o FILE, or use -f (--force)");
	_subject = input.name();
	if (!_quiet) input.showProgress("encoding " + input.name());
	// The host's XML parser tells line and column itself.
	Transcoder::encode(input.stream(), out.stream(), _encodeOptions);
	_subject = out.name();
	out.commit();
	report(input, out.octetsWritten(), out.name());
}


void Fitool::decode(InputFile& input, const std::string& output, bool replace)
{
	expectFastInfoset(input);
	_subject = output.empty() ? "(standard output)" : output;
	OutputFile out(output, replace);
	_subject = input.name();
	if (!_quiet) input.showProgress("decoding " + input.name());
	// Each document ends with a line break, which separates it from the next.
	forEachDocument(input, [&]
		{
			Transcoder::decode(input.stream(), out.stream(), _decodeOptions);
		});
	_subject = out.name();
	out.commit();
	report(input, out.octetsWritten(), out.name());
}


void Fitool::check(const std::string& inputPath)
{
	_subject = inputName(inputPath);
	InputFile input(inputPath);
	expectFastInfoset(input);
	if (!_quiet) input.showProgress("checking " + input.name());
	const std::unique_ptr<Ixor::FastInfoset::FastInfosetParser> pParser = Transcoder::newParser(_decodeOptions);
	forEachDocument(input, [&]
		{
			DocumentCounts counts;
			pParser->setContentHandler(&counts);
			pParser->setProperty(Ixor::XML::XMLReader::PROPERTY_LEXICAL_HANDLER, static_cast<Ixor::XML::LexicalHandler*>(&counts));
			Ixor::XML::InputSource source(input.stream());
			pParser->parse(&source);
			if (_verbose) _out << _subject << ": " << pParser->lastDocumentSize() << " octets, " << counts.summary() << '\n';
		});
}


void Fitool::dump(const CommandLine& commandLine)
{
	_subject = inputName(commandLine.inputs().front());
	InputFile input(commandLine.inputs().front());
	expectFastInfoset(input);
	if (!_quiet) input.showProgress("reading " + input.name());
	const std::string content = input.readAll();
	const std::string name = _subject;
	const bool multiple = _decodeOptions.multiple;
	std::size_t start = 0;
	for (int index = 1;; ++index)
	{
		// Each listing counts its offsets from its document's first octet.
		if (multiple) _out << (index > 1 ? "\n" : "") << "Document " << index << " at octet " << start << '\n';
		if (index > 1) _subject = documentName(name, index, start);
		start += dumpDocument(content.data() + start, content.size() - start, _decodeOptions);
		if (start == content.size()) return;
		if (!multiple) throw DataAfterDocumentException(AFTER_THE_DOCUMENT + NumberFormatter::format(start));
	}
}


std::size_t Fitool::dumpDocument(const char* data, std::size_t available, const Transcoder::DecodeOptions& options)
{
	// The parser finds the document's end and applies the limits; the
	// listing shows what it can also of a document that the parser refuses,
	// and the parser's fault is the one told.
	Ixor::XML::DefaultHandler ignored;
	const std::unique_ptr<Ixor::FastInfoset::FastInfosetParser> pParser = Transcoder::newParser(options);
	pParser->setContentHandler(&ignored);
	std::exception_ptr pRefusal;
	std::size_t size = available;
	try
	{
		pParser->parseMemoryNP(data, available);
		size = static_cast<std::size_t>(pParser->lastDocumentSize());
	}
	catch (const Ixor::Exception&)
	{
		pRefusal = std::current_exception();
	}
	DocumentDumper dumper(_out, *pParser);
	try
	{
		dumper.dump(data, size);
	}
	catch (...)
	{
		_whereNote = " (at octet " + NumberFormatter::format(dumper.offset()) + ")";
		if (!pRefusal) throw;
	}
	if (pRefusal) std::rethrow_exception(pRefusal);
	return size;
}


void Fitool::forEachDocument(InputFile& input, const std::function<void()>& readOne)
{
	const std::string name = _subject;
	for (int index = 1;; ++index)
	{
		const Poco::UInt64 start = input.octetsRead();
		if (index > 1) _subject = documentName(name, index, start);
		try
		{
			readOne();
		}
		catch (...)
		{
			// The parser reads ahead in blocks: the fault lies in what it has
			// taken so far.
			_whereNote = " (at or before octet " + NumberFormatter::format(input.octetsRead() - start) + ")";
			throw;
		}
		// The parser leaves the stream after the document.
		std::istream& stream = input.stream();
		stream.clear();
		if (stream.peek() == std::char_traits<char>::eof()) return;
		if (!_decodeOptions.multiple)
			throw DataAfterDocumentException(AFTER_THE_DOCUMENT + NumberFormatter::format(input.octetsRead()));
	}
}


std::string Fitool::documentName(const std::string& inputName, int index, Poco::UInt64 start)
{
	return inputName + ": document " + NumberFormatter::format(index) + " at octet " + NumberFormatter::format(start);
}


void Fitool::stats(const CommandLine& commandLine)
{
	_subject = inputName(commandLine.inputs().front());
	InputFile input(commandLine.inputs().front());
	expectXML(input, "dump");
	const std::string xml = input.readAll();
	SizeAndSpeed sizeAndSpeed(xml, _encodeOptions);
	sizeAndSpeed.print(_out, input.name());
}


void Fitool::vocab(const CommandLine& commandLine)
{
	const CommandLine::VocabularyOptions& options = commandLine.vocabularyOptions();
	// Opened first, so that a terminal is refused before the samples are
	// read; a failed run leaves nothing behind.
	_subject = commandLine.output().empty() ? "(standard output)" : commandLine.output();
	OutputFile out(commandLine.output(), true);
	if (out.isTerminal() && !commandLine.force())
		throw UsageException("a vocabulary is Fast Infoset, not written to a terminal; redirect the output, give -o FILE, or use -f (--force)");
	Ixor::FastInfoset::VocabularyBuilder builder;
	builder.setMaxAttributeValues(options.maxAttributeValues);
	builder.setMaxCharacterChunks(options.maxCharacterChunks);
	builder.setMaxStringLength(options.maxStringLength);
	for (const std::string& samplePath: commandLine.inputs())
	{
		_subject = inputName(samplePath);
		InputFile input(samplePath);
		if (!_quiet) input.showProgress("reading " + input.name());
		if (looksLikeFastInfoset(input.peek(SNIFF_LENGTH)))
		{
			const std::unique_ptr<Ixor::FastInfoset::FastInfosetParser> pParser = Transcoder::newParser(_decodeOptions);
			pParser->setContentHandler(&builder);
			forEachDocument(input, [&]
				{
					Ixor::XML::InputSource source(input.stream());
					pParser->parse(&source);
				});
		}
		else builder.addXML(input.stream());
	}
	const std::string uri = options.uri.empty() ? vocabularyURI(builder, commandLine.output()) : options.uri;
	_subject = out.name();
	VocabularyDocument::save(builder.vocabulary(uri), out.stream());
	out.commit();
	if (_verbose)
	{
		_err << out.name() << ": vocabulary " << uri << " from " << builder.sampleCount()
			<< (builder.sampleCount() == 1 ? " sample, " : " samples, ") << out.octetsWritten() << " octets\n";
	}
}


void Fitool::loadVocabulary(const CommandLine& commandLine)
{
	_subject = inputName(commandLine.vocabularyPath());
	InputFile file(commandLine.vocabularyPath());
	if (!looksLikeFastInfoset(file.peek(SNIFF_LENGTH)))
		throw NotVocabularyException("the file is not Fast Infoset; make a vocabulary with fitool vocab");
	const std::string content = file.readAll();
	// A writer needs map tables, which cannot hold a value twice; a parser
	// takes vector tables, which can: each direction loads its own.
	const bool writes = _command == CommandLine::ENCODE || _command == CommandLine::CONVERT;
	const bool reads = _command != CommandLine::ENCODE;
	for (const bool forWriting: {true, false})
	{
		if (forWriting ? !writes : !reads) continue;
		std::istringstream in(content);
		std::unique_ptr<DocumentVocabulary>& pVocabulary = forWriting ? _pWritingVocabulary : _pReadingVocabulary;
		pVocabulary.reset(new DocumentVocabulary(VocabularyDocument::load(in,
			forWriting ? DocumentVocabulary::VOC_MAP : DocumentVocabulary::VOC_VECTOR)));
		if (pVocabulary->getURI().empty())
			throw NotVocabularyException("the document carries no vocabulary URI; make a vocabulary with fitool vocab");
	}
	_encodeOptions.pVocabulary = _pWritingVocabulary.get();
	_decodeOptions.pVocabulary = _pReadingVocabulary.get();
}


std::string Fitool::vocabularyAdvice(const Ixor::Exception& exc) const
{
	if (!CommandLine::takesVocabulary(_command) || exc.message().compare(0, VOCABULARY_NOT_GIVEN.size(), VOCABULARY_NOT_GIVEN) != 0)
		return "";
	if (!_decodeOptions.pVocabulary) return "; give it with --vocabulary FILE";
	return "; --vocabulary gives " + _decodeOptions.pVocabulary->getURI() + " instead";
}


void Fitool::expectFastInfoset(InputFile& input)
{
	const std::string start = input.peek(SNIFF_LENGTH);
	if (!looksLikeFastInfoset(start) && looksLikeXML(start)) throw NotFastInfosetException("the input is XML text; use fitool encode");
}


void Fitool::expectXML(InputFile& input, const char* command)
{
	if (looksLikeFastInfoset(input.peek(SNIFF_LENGTH)))
		throw NotXMLException(std::string("the input is Fast Infoset; use fitool ") + command);
}


void Fitool::report(InputFile& input, Poco::UInt64 written, const std::string& output)
{
	if (!_verbose) return;
	_err << input.name() << " -> " << output << ": " << input.octetsRead() << " -> " << written << " octets ("
		<< TextFormat::percent(static_cast<double>(written), static_cast<double>(input.octetsRead())) << ")\n";
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


bool Fitool::looksLikeXML(const std::string& firstOctets)
{
	// UTF-16, with a byte order mark or starting with '<'.
	if (firstOctets.compare(0, 2, "\xFE\xFF") == 0 || firstOctets.compare(0, 2, "\xFF\xFE") == 0
		|| firstOctets.compare(0, 2, std::string("\0<", 2)) == 0)
		return true;
	std::string::size_type start = firstOctets.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
	start = firstOctets.find_first_not_of(" \t\r\n", start);
	return start != std::string::npos && firstOctets[start] == '<';
}


std::string Fitool::outputName(const std::string& input, bool toFastInfoset, const std::string& folder)
{
	const std::string from = toFastInfoset ? ".xml" : ".fi";
	const std::string to = toFastInfoset ? ".fi" : ".xml";
	Poco::Path path(input);
	std::string name = path.getFileName();
	const bool replaced = name.size() > from.size() && Poco::icompare(name, name.size() - from.size(), from.size(), from) == 0;
	name = (replaced ? name.substr(0, name.size() - from.size()) : name) + to;
	if (!folder.empty()) path = Poco::Path(folder).makeDirectory();
	return path.setFileName(name).toString();
}


std::string Fitool::vocabularyURI(const Ixor::FastInfoset::VocabularyBuilder& builder, const std::string& output)
{
	// The URI changes with the content: a document written with one
	// vocabulary and read with another, built again from other samples
	// under the same name, would give other names and text without a word.
	std::ostringstream unnamed;
	VocabularyDocument::save(builder.vocabulary(std::string()), unnamed);
	Poco::SHA2Engine sha256(Poco::SHA2Engine::SHA_256);
	sha256.update(unnamed.str());
	const std::string digest = Poco::DigestEngine::digestToHex(sha256.digest()).substr(0, 16);
	std::string name = output.empty() || output == "-" ? std::string() : Poco::Path(output).getBaseName();
	// A URN takes few characters as they are.
	for (char& c: name)
	{
		if (!Poco::Ascii::isAlphaNumeric(c) && c != '-' && c != '.' && c != '_') c = '-';
	}
	return "urn:fitool:vocabulary:" + (name.empty() ? std::string() : name + ":") + digest;
}


std::string Fitool::version()
{
	const Poco::UInt32 poco = Poco::Environment::libraryVersion();
	return std::string("fitool ") + FITOOL_VERSION + " (Ixor FastInfoset " + FITOOL_VERSION + ", POCO "
		+ NumberFormatter::format(poco >> 24) + "." + NumberFormatter::format((poco >> 16) & 0xFF) + "."
		+ NumberFormatter::format((poco >> 8) & 0xFF) + ")";
}


} // namespace Fitool
