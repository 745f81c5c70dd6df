//
// ToolTest.cpp
//
// Runs the fitool command as users do, in its own process: conversions in
// both directions over the test data with each option, the listing, exit
// statuses and messages for bad input and bad usage, several files,
// terminals and pipes, and how output files are written and replaced.
//


#include "Ixor/FastInfoset/Converter.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/VocabularyBuilder.h"
#include "Ixor/FastInfoset/VocabularyDocument.h"
#include "EventRecorder.h"
#include "TestSupport.h"
#include "Poco/DirectoryIterator.h"
#include "Poco/File.h"
#include "Poco/NullStream.h"
#include "Poco/Path.h"
#include "Poco/PipeStream.h"
#include "Poco/Process.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/SAXParser.h"
#include "Poco/StreamCopier.h"
#include "Poco/TemporaryFile.h"
#include "Poco/XML/XMLWriter.h"
#include <gtest/gtest.h>
#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <stdlib.h>
#include <unistd.h>
#include <fstream>
#include <regex>
#include <sstream>


using namespace Ixor::FastInfoset;
using namespace TestSupport;
using Ixor::XML::XMLReader;


#ifdef FITOOL_PATH


namespace {


struct Outcome
{
	int status;
	std::string out;
	std::string err;
};


Outcome fitool(const std::vector<std::string>& arguments, const std::string& input = std::string())
	/// Runs fitool with the arguments and input on standard input.
{
	Poco::Pipe inPipe;
	Poco::Pipe outPipe;
	Poco::Pipe errPipe;
	Poco::ProcessHandle process = Poco::Process::launch(FITOOL_PATH, arguments, &inPipe, &outPipe, &errPipe);
	{
		// Inputs here are small enough for the pipe, so that writing all
		// of it first cannot block.
		Poco::PipeOutputStream in(inPipe);
		in << input;
		in.close();
	}
	Outcome run;
	Poco::PipeInputStream out(outPipe);
	Poco::StreamCopier::copyToString(out, run.out);
	Poco::PipeInputStream err(errPipe);
	Poco::StreamCopier::copyToString(err, run.err);
	run.status = process.wait();
	return run;
}


std::vector<std::string> dataFiles()
{
	std::vector<std::string> files;
	for (Poco::DirectoryIterator it{std::string(FASTINFOSET_TEST_DATA)}, end; it != end; ++it)
	{
		if (it.path().getExtension() == "xml") files.push_back(it.path().toString());
	}
	std::sort(files.begin(), files.end());
	return files;
}


int listedElements(const std::string& listing)
	/// The element count of the listing's summary, -1 when there is none.
{
	const std::string::size_type row = listing.find("\n  structure ");
	const std::string::size_type items = row == std::string::npos ? row : listing.find("%  ", row);
	return items == std::string::npos ? -1 : std::stoi(listing.substr(items + 3));
}


void feedXML(const std::string& xml, FastInfosetWriter& writer)
{
	Ixor::XML::SAXParser parser;
	parser.setFeature(XMLReader::FEATURE_NAMESPACE_PREFIXES, true);
	parser.setContentHandler(&writer);
	std::istringstream in(xml);
	Ixor::XML::InputSource source(in);
	parser.parse(&source);
}


int indexedStrings(const std::string& fi)
	/// The entries of the attribute-value, character-chunk and other-string
	/// tables at the end, as the listing gives them.
{
	const std::string listing = fitool({"dump", fi}).out;
	int count = 0;
	for (const std::string label: {"  attribute values", "  content character chunks", "  other strings"})
	{
		// The tables close the listing, after the summary's rows.
		const std::string::size_type at = listing.rfind(label);
		if (at == std::string::npos) return -1;
		count += std::stoi(listing.substr(at + label.size()));
	}
	return count;
}


class ToolTest: public testing::Test
	/// A folder of its own for each test.
{
protected:
	ToolTest():
		_folder(Poco::TemporaryFile::tempName())
	{
		_folder.createDirectories();
	}

	~ToolTest()
	{
		_folder.remove(true);
	}

	std::string path(const std::string& name) const
	{
		return Poco::Path(_folder.path()).append(name).toString();
	}

	void write(const std::string& name, const std::string& content) const
	{
		std::ofstream(path(name), std::ios::binary) << content;
	}

	std::vector<std::string> folderContent() const
	{
		std::vector<std::string> names;
		_folder.list(names);
		std::sort(names.begin(), names.end());
		return names;
	}

	Poco::File _folder;
};


std::string writtenDocument(const std::function<void(FastInfosetWriter&)>& events)
	/// A Fast Infoset document written straight from events, for structures
	/// that XML text cannot give the writer.
{
	std::ostringstream out;
	{
		FastInfosetWriter writer(out);
		events(writer);
	}
	return out.str();
}


} // namespace


TEST_F(ToolTest, DataFilesSurviveEncodeAndDecodeWithEachOption)
{
	const std::vector<std::vector<std::string>> OPTIONS =
	{
		{},
		{"--strip-whitespace"},
		{"--max-indexed-length", "0"},
		{"--max-indexed-length=100000"},
		{"--xml-declaration"}
	};
	for (const std::string& file: dataFiles())
	{
		const std::string xml = fileContent(file);
		std::string doctype;
		const std::vector<std::string> plain = comparableXMLEvents(xml, false, &doctype);
		const std::vector<std::string> stripped = comparableXMLEvents(xml, true);
		std::size_t defaultSize = 0;
		int defaultStrings = 0;
		for (const std::vector<std::string>& options: OPTIONS)
		{
			SCOPED_TRACE(file + (options.empty() ? std::string() : " " + options[0]));
			std::vector<std::string> arguments = {"encode", file, "-o", path("doc.fi")};
			arguments.insert(arguments.end(), options.begin(), options.end());
			const Outcome encoded = fitool(arguments);
			ASSERT_EQ(0, encoded.status) << encoded.err;
			EXPECT_EQ("", encoded.out + encoded.err);
			const std::string fi = fileContent(path("doc.fi"));

			const Outcome decoded = fitool({"decode", path("doc.fi")});
			ASSERT_EQ(0, decoded.status) << decoded.err;
			std::string backDoctype;
			const bool strip = !options.empty() && options[0] == "--strip-whitespace";
			EXPECT_EQ("", firstDifference(strip ? stripped : plain, comparableXMLEvents(decoded.out, false, &backDoctype)));
			EXPECT_EQ(doctype, backDoctype);

			// The listing walks the whole document.
			const Outcome dumped = fitool({"dump", path("doc.fi")});
			EXPECT_EQ(0, dumped.status) << dumped.err;
			EXPECT_EQ(std::count_if(plain.begin(), plain.end(), [](const std::string& line) { return line.compare(0, 13, "startElement ") == 0; }),
				listedElements(dumped.out));

			// Each option does what it says.
			if (options.empty())
			{
				defaultSize = fi.size();
				defaultStrings = indexedStrings(path("doc.fi"));
			}
			else if (options[0] == "--max-indexed-length")
			{
				EXPECT_GT(fi.size(), defaultSize);
			}
			else if (options[0] == "--strip-whitespace")
			{
				EXPECT_LT(fi.size(), defaultSize);
			}
			else if (options[0] != "--xml-declaration")
			{
				EXPECT_GT(indexedStrings(path("doc.fi")), defaultStrings);
			}
			const std::string start = options.empty() || options[0] != "--xml-declaration" ? "" : "<?xml encoding='finf'?>";
			EXPECT_EQ(start + std::string("\xE0\0\0\x01", 4), fi.substr(0, start.size() + 4));
		}
	}
}


TEST_F(ToolTest, DecodedTextEncodesToTheSameDocument)
{
	// Fast Infoset to XML text and back: the second text has the events of
	// the first, whatever the decoding options.
	const std::vector<std::vector<std::string>> OPTIONS = {{}, {"--declaration"}, {"--pretty"}, {"--pretty", "--declaration"}};
	for (const std::string& file: dataFiles())
	{
		ASSERT_EQ(0, fitool({"encode", file, "-o", path("first.fi")}).status);
		for (const std::vector<std::string>& options: OPTIONS)
		{
			SCOPED_TRACE(file + " " + (options.empty() ? std::string() : options[0]));
			std::vector<std::string> arguments = {"decode", path("first.fi"), "-o", path("first.xml")};
			arguments.insert(arguments.end(), options.begin(), options.end());
			ASSERT_EQ(0, fitool(arguments).status);
			ASSERT_EQ(0, fitool({"encode", path("first.xml"), "-o", path("second.fi")}).status);
			ASSERT_EQ(0, fitool({"decode", path("second.fi"), "-o", path("second.xml")}).status);
			const std::string first = fileContent(path("first.xml"));
			const std::string second = fileContent(path("second.xml"));
			const bool pretty = !options.empty() && options[0] == "--pretty";
			EXPECT_EQ("", firstDifference(comparableXMLEvents(first, pretty), comparableXMLEvents(second, pretty)));
			const bool declaration = std::find(options.begin(), options.end(), "--declaration") != options.end();
			EXPECT_EQ(declaration, first.compare(0, 14, "<?xml version=") == 0);

			// Indenting changes whitespace between elements and nothing else.
			if (pretty)
			{
				EXPECT_EQ("", firstDifference(comparableXMLEvents(fileContent(file), true), comparableXMLEvents(first, true)));
			}
		}
	}
}


TEST_F(ToolTest, ConvertTakesTheDirectionFromTheFirstOctets)
{
	const std::string file = FASTINFOSET_TEST_DATA "/saml-namespaced.xml";
	const Outcome encoded = fitool({"encode", file});
	const Outcome decoded = fitool({"decode", "-"}, encoded.out);
	ASSERT_EQ(0, encoded.status);
	ASSERT_EQ(0, decoded.status);

	write("plain.fi", encoded.out);
	ASSERT_EQ(0, fitool({"encode", "--xml-declaration", file, "-o", path("preheader.fi")}).status);
	struct Case
	{
		std::string input;
		std::string expected;
	};
	const Case CASES[] =
	{
		{path("plain.fi"), decoded.out},
		{path("preheader.fi"), decoded.out},
		{file, encoded.out},   // XML text that starts with "<?xml" too
	};
	for (const Case& c: CASES)
	{
		SCOPED_TRACE(c.input);
		const Outcome converted = fitool({"convert", c.input});
		EXPECT_EQ(0, converted.status) << converted.err;
		EXPECT_EQ(c.expected, converted.out);
	}
	const Outcome fromStandardInput = fitool({"convert"}, fileContent(file));
	EXPECT_EQ(encoded.out, fromStandardInput.out);
}


TEST_F(ToolTest, BadDocumentsAndBadUsageGiveStatusAndOneLine)
{
	const std::string fi = fitool({"encode", FASTINFOSET_TEST_DATA "/rss-feed-pi-cdata.xml"}).out;
	ASSERT_GT(fi.size(), 3000u);
	write("truncated.fi", fi.substr(0, 3000));
	write("binary.dat", std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16));
	write("good.xml", "<doc/>");
	const std::string missing = path("missing.xml");

	struct Case
	{
		std::vector<std::string> arguments;
		int status;
		std::string message;   // the line on standard error, or its start
	};
	const Case CASES[] =
	{
		{{"decode", path("truncated.fi")}, 1, "fitool: " + path("truncated.fi")
			+ ": FastInfoset Parse Exception: Unexpected end of stream while parsing octet string (at octet 3000)\n"},
		{{"dump", path("truncated.fi")}, 1, "fitool: " + path("truncated.fi")
			+ ": FastInfoset Parse Exception: Unexpected end of stream while parsing octet string (at octet 3000)\n"},
		{{"encode", path("binary.dat")}, 1, "fitool: " + path("binary.dat") + ": SAXParseException: "},
		{{"convert", path("binary.dat")}, 1, "fitool: " + path("binary.dat") + ": SAXParseException: "},
		{{"decode", path("binary.dat")}, 1, "fitool: " + path("binary.dat")
			+ ": FastInfoset Exception: Not a valid Fast Infoset document (invalid header) (at octet 2)\n"},
		{{"encode", missing}, 1, "fitool: " + missing + ": File not found\n"},
		{{"dump", missing}, 1, "fitool: " + missing + ": File not found\n"},
		{{"encode", path("good.xml"), "-o", path("no/such/folder.fi")}, 1, "fitool: " + path("no/such/folder.fi") + ": File not found: "},
		{{"translate"}, 2, "fitool: Bad usage: unknown command: translate\n"},
		{{"encode", "--pretty"}, 2, "fitool: Unknown option"},
		{{"dump", "a.fi", "b.fi"}, 2, "fitool: Bad usage: more than one input: b.fi\n"},
		{{"encode", "--max-indexed-length", "-1"}, 2, "fitool: Invalid option argument: --max-indexed-length takes a number from 0 up: -1\n"},
		{{"check", "--amplification-threshold", "-1"}, 2, "fitool: Invalid option argument: --amplification-threshold takes a number of octets: -1\n"},
		{{"check", "--amplification-threshold=18446744073709551616"}, 2, "fitool: Invalid option argument: --amplification-threshold takes a number of octets: "},
		{{"dump", "--max-amplification=x"}, 2, "fitool: Invalid option argument: --max-amplification takes a number from 0 up: x\n"},
		{{"encode", "--multiple"}, 2, "fitool: Unknown option"},
		{{"vocab", "--max-string-length", "x"}, 2, "fitool: Invalid option argument: --max-string-length takes a number from 0 up: x\n"},
		{{"vocab", "--max-attribute-values=-3"}, 2, "fitool: Invalid option argument: --max-attribute-values takes a number from 0 up: -3\n"},
		{{"stats", "--vocabulary", "v.voc"}, 2, "fitool: Unknown option"},
		{{"decode", "-o"}, 2, "fitool: Missing option argument"},
		{{}, 2, "usage: fitool COMMAND"},
	};
	for (const Case& c: CASES)
	{
		SCOPED_TRACE(c.arguments.empty() ? std::string("(none)") : c.arguments[0] + " " + (c.arguments.size() > 1 ? c.arguments[1] : ""));
		const Outcome run = fitool(c.arguments);
		EXPECT_EQ(c.status, run.status);
		EXPECT_EQ(c.message, run.err.substr(0, c.message.size()));
		if (c.status == 1)
		{
			EXPECT_EQ(run.err.size() - 1, run.err.find('\n')) << run.err;
		}
	}
}


TEST_F(ToolTest, FailedRunsLeaveNoOutputFile)
{
	write("broken.xml", "<doc><item>text</item>" + std::string(5000, ' ') + "<unclosed></doc>");
	write("good.xml", "<doc><item>text</item></doc>");
	const std::vector<std::string> before = folderContent();

	for (const char* command: {"encode", "convert"})
	{
		SCOPED_TRACE(command);
		EXPECT_EQ(1, fitool({command, path("broken.xml"), "-o", path("out.fi")}).status);
		EXPECT_EQ(before, folderContent());
	}

	// A file that exists keeps its content when the run fails.
	write("out.fi", "old");
	EXPECT_EQ(1, fitool({"encode", path("broken.xml"), "-o", path("out.fi")}).status);
	EXPECT_EQ("old", fileContent(path("out.fi")));

	// Writing over the input is safe: the input is read before the rename.
	ASSERT_EQ(0, fitool({"encode", path("good.xml"), "-o", path("out.fi")}).status);
	ASSERT_EQ(0, fitool({"decode", path("out.fi"), "-o", path("out.fi")}).status);
	EXPECT_EQ("<doc><item>text</item></doc>\n", fileContent(path("out.fi")));
	std::vector<std::string> after = before;
	after.push_back("out.fi");
	std::sort(after.begin(), after.end());
	EXPECT_EQ(after, folderContent());
}


TEST_F(ToolTest, DecodeWritesWhatTheConverterWrites)
{
	const std::vector<std::pair<std::vector<std::string>, int>> OPTIONS =
	{
		{{}, 0},
		{{"--pretty"}, Ixor::XML::XMLWriter::PRETTY_PRINT},
		{{"--declaration"}, Ixor::XML::XMLWriter::WRITE_XML_DECLARATION},
	};
	for (const std::string& file: dataFiles())
	{
		std::istringstream xml(fileContent(file));
		std::ostringstream fi;
		Converter::convertToFIS(xml, fi, 0, 16);
		write("doc.fi", fi.str());
		for (const auto& options: OPTIONS)
		{
			SCOPED_TRACE(file + " " + std::to_string(options.second));
			std::vector<std::string> arguments = {"decode", path("doc.fi")};
			arguments.insert(arguments.end(), options.first.begin(), options.first.end());
			std::istringstream in(fi.str());
			std::ostringstream expected;
			Converter::convertToXML(in, expected, options.second | Converter::END_WITH_NEWLINE);
			EXPECT_EQ(expected.str(), fitool(arguments).out);
		}
	}

	// What XML text cannot hold fails the run and leaves no output.
	write("comment.fi", writtenDocument([](FastInfosetWriter& w)
		{
			w.startDocument();
			w.startElement("", "r", "");
			w.comment("a--b", 0, 4);
			w.endElement("", "r", "");
			w.endDocument();
		}));
	const Outcome refused = fitool({"decode", path("comment.fi"), "-o", path("comment.xml")});
	EXPECT_EQ(1, refused.status);
	EXPECT_EQ("fitool: " + path("comment.fi") + ": FastInfoset Exception: Cannot be written as well-formed XML: comment contains \"--\": \"a--b\"",
		refused.err.substr(0, refused.err.find(" (at")));
	EXPECT_FALSE(Poco::File(path("comment.xml")).exists());
}


TEST_F(ToolTest, DocumentsWrittenWithAVocabularyDecodeToTheTextWrittenWithout)
{
	// A vocabulary of two data files serves documents of every kind: those
	// that it knows, and those that it does not know at all.
	const std::vector<std::string> files = dataFiles();
	ASSERT_GE(files.size(), 3u);
	const Outcome built = fitool({"vocab", files[0], files[1], "-o", path("data.voc")});
	ASSERT_EQ(0, built.status) << built.err;
	for (const std::string& file: files)
	{
		SCOPED_TRACE(file);
		ASSERT_EQ(0, fitool({"encode", file, "-o", path("without.fi")}).status);
		const Outcome encoded = fitool({"encode", "--vocabulary", path("data.voc"), file, "-o", path("with.fi")});
		ASSERT_EQ(0, encoded.status) << encoded.err;
		const Outcome decoded = fitool({"decode", "--vocabulary", path("data.voc"), path("with.fi")});
		EXPECT_EQ(0, decoded.status) << decoded.err;
		const Outcome plain = fitool({"decode", path("without.fi")});
		EXPECT_EQ(plain.out, decoded.out);
		EXPECT_EQ(0, fitool({"check", "--vocabulary", path("data.voc"), path("with.fi")}).status);
		EXPECT_EQ(listedElements(fitool({"dump", path("without.fi")}).out),
			listedElements(fitool({"dump", "--vocabulary", path("data.voc"), path("with.fi")}).out));
		if (file == files[0] || file == files[1])
		{
			EXPECT_LT(fileContent(path("with.fi")).size(), fileContent(path("without.fi")).size());
		}
	}
}


TEST_F(ToolTest, VocabNamesWhatItBuiltByItsContent)
{
	const std::string saml = FASTINFOSET_TEST_DATA "/saml-namespaced.xml";
	const std::string gschema = FASTINFOSET_TEST_DATA "/gschema-text.xml";
	ASSERT_EQ(0, fitool({"encode", saml, "-o", path("saml.fi")}).status);
	Poco::File(path("from-fi")).createDirectory();
	Poco::File(path("more")).createDirectory();
	const auto build = [&](std::vector<std::string> arguments, const std::string& output)
	{
		arguments.insert(arguments.begin(), "vocab");
		arguments.insert(arguments.end(), {"-o", path(output)});
		const Outcome run = fitool(arguments);
		EXPECT_EQ(0, run.status) << run.err;
		return VocabularyDocument::load(path(output));
	};
	const DocumentVocabulary fromXML = build({saml}, "orders.voc");
	EXPECT_TRUE(std::regex_match(fromXML.getURI(), std::regex("urn:fitool:vocabulary:orders:[0-9a-f]{16}"))) << fromXML.getURI();
	// The same samples, as Fast Infoset, give the same vocabulary.
	build({path("saml.fi")}, "from-fi/orders.voc");
	EXPECT_EQ(fileContent(path("orders.voc")), fileContent(path("from-fi/orders.voc")));
	// Other samples give another URI, so that documents written with one
	// are refused by the other rather than misread.
	const DocumentVocabulary more = build({saml, gschema}, "more/orders.voc");
	EXPECT_NE(fromXML.getURI(), more.getURI());
	EXPECT_EQ("urn:x", build({saml, "--uri", "urn:x"}, "x.voc").getURI());
	const Outcome toStandardOutput = fitool({"vocab", saml});
	write("stdout.voc", toStandardOutput.out);
	EXPECT_TRUE(std::regex_match(VocabularyDocument::load(path("stdout.voc")).getURI(), std::regex("urn:fitool:vocabulary:[0-9a-f]{16}")));

	// The builder's limits: no strings at all, or none of more than 4 octets.
	const DocumentVocabulary none = build({saml, "--max-attribute-values", "0", "--max-character-chunks=0"}, "none.voc");
	const DocumentVocabulary short4 = build({saml, "--max-string-length", "4"}, "short.voc");
	const DocumentVocabulary empty(DocumentVocabulary::VOC_MAP);
	for (DocumentVocabulary::ID id: {DocumentVocabulary::ATTRIBUTE_VALUE, DocumentVocabulary::CONTENT_CHARACTER_CHUNK})
	{
		SCOPED_TRACE(id);
		EXPECT_EQ(empty.vocabulary(id)->size(), none.vocabulary(id)->size());
		EXPECT_LT(empty.vocabulary(id)->size(), short4.vocabulary(id)->size());
		EXPECT_LT(short4.vocabulary(id)->size(), fromXML.vocabulary(id)->size());
		const VerbTable<std::string>& strings = short4.vocabulary(id)->index();
		for (std::size_t i = 0; i < strings.size(); ++i) EXPECT_LE(strings[i].size(), 4u) << strings[i];
	}
	EXPECT_EQ(fromXML.elementVocabulary()->size(), none.elementVocabulary()->size());
}


TEST_F(ToolTest, DumpListsHeaderItemsSummaryAndTables)
{
	DocumentVocabulary preset(DocumentVocabulary::VOC_MAP);
	bool found = false;
	preset.index(DocumentVocabulary::LOCAL_NAME, "values", found);
	std::ostringstream out;
	{
		FastInfosetWriter writer(out, true, preset);
		writer.startDocument();
		writer.startElement("", "values", "");
		writer.encodedData(1);
		writer.encodedData(2);
		writer.encodedData(3);
		writer.comment("note", 0, 4);
		writer.characters("same");
		writer.characters("same");
		writer.endElement("", "values", "");
		writer.endDocument();
	}
	write("typed.fi", out.str());
	const Outcome run = fitool({"dump", path("typed.fi")});
	ASSERT_EQ(0, run.status) << run.err;
	const std::string total = std::to_string(out.str().size());
	const auto row = [](const std::string& label, std::size_t width, const std::string& value, std::size_t valueWidth)
	{
		return "  " + label + std::string(width - label.size() + valueWidth - value.size(), ' ') + value + "\n";
	};
	for (const std::string& expected: std::vector<std::string>{
		"Fast Infoset document, " + total + " octets\n",
		"  pre-header: \"<?xml encoding='finf'?>\"\n",
		"  optional components: initial vocabulary\n",
		"    local names: 1 from local-name[1]: \"values\"\n",
		"  element values  name literal → element-name[1] (local: local-name[1])\n",
		"    data int \"1 2 3\"  literal algorithm 4 (int), not added\n",
		"    comment \"note\"  literal UTF-8 → other-string[1]\n",
		"    text \"same\"  literal UTF-8 → chunk[1]\n",
		"    text \"same\"  chunk[1]\n",
		"  end of document\n",
		"  typed data", "1 chunk\n",
		"  character content", "2 chunks (1 literal, 1 indexed)\n",
		row("total", 20, total, 10),
		row("local names", 26, "1", 8),
		row("content character chunks", 26, "1", 8)})
	{
		EXPECT_NE(std::string::npos, run.out.find(expected)) << expected << "\nin\n" << run.out;
	}
}


TEST_F(ToolTest, StatsHelpAndVersion)
{
	const std::string file = FASTINFOSET_TEST_DATA "/gschema-text.xml";
	const Outcome stats = fitool({"stats", file, "--max-indexed-length", "8"});
	EXPECT_EQ(0, stats.status) << stats.err;
	for (const std::string& expected: std::vector<std::string>{"max indexed length 8", "Fast Infoset, gzip'd",
		std::to_string(fileContent(file).size()), "encode XML to FI", "decode FI to XML"})
	{
		EXPECT_NE(std::string::npos, stats.out.find(expected)) << expected;
	}

	const Outcome help = fitool({"--help"});
	EXPECT_EQ(0, help.status);
	EXPECT_EQ(0u, help.out.find("usage: fitool COMMAND"));
	const Outcome commandHelp = fitool({"dump", "--help"});
	EXPECT_EQ(0, commandHelp.status);
	EXPECT_EQ(0u, commandHelp.out.find("usage: fitool dump [options] [FILE]"));
	const Outcome version = fitool({"--version"});
	EXPECT_EQ(0, version.status);
	EXPECT_EQ(0u, version.out.find("fitool 1."));
}


TEST_F(ToolTest, BehavesLikeTheUnixToolsPeopleKnow)
{
	// Each row runs in a fresh folder ({dir}) that holds one.xml, two.xml,
	// tiny.xml, doc.fi (one.xml encoded), tiny.fi, a truncated bad.fi, a
	// two.fi that says "old", a folder out/, and the documents made below.
	// {tty} is a terminal.
	const std::string NOTHING = "(nothing)";   // the stream stays empty
	const std::string ABSENT = "(absent)";     // the file does not exist
	const std::string FI = std::string("\xE0\0", 2);
	struct Case
	{
		const char* what;
		std::vector<std::string> arguments;
		std::string input;       // standard input: a file's name in the folder
		int status;
		std::string out;         // a fragment of standard output, or NOTHING
		std::string err;         // a fragment of standard error, or NOTHING
		std::vector<std::pair<std::string, std::string>> files;   // the start of a file afterwards, or ABSENT
	};
	const Case CASES[] =
	{
		// Terminals
		{"encode refuses a terminal", {"encode", "{dir}/tiny.xml", "-o", "{tty}"}, "", 2, NOTHING,
			"fitool: Bad usage: Fast Infoset is not written to a terminal; redirect the output, give -o FILE, or use -f (--force)\n", {}},
		{"encode writes to a terminal when forced", {"encode", "-f", "{dir}/tiny.xml", "-o", "{tty}"}, "", 0, NOTHING, NOTHING, {}},
		{"decode writes to a terminal", {"decode", "{dir}/tiny.fi", "-o", "{tty}"}, "", 0, NOTHING, NOTHING, {}},
		{"convert refuses a terminal for Fast Infoset", {"convert", "{dir}/tiny.xml", "-o", "{tty}"}, "", 2, NOTHING, "(--force)", {}},

		// The wrong format
		{"decode given XML text", {"decode", "{dir}/one.xml"}, "", 1, NOTHING,
			"fitool: {dir}/one.xml: Not Fast Infoset: the input is XML text; use fitool encode\n", {}},
		{"dump given XML text", {"dump", "{dir}/one.xml"}, "", 1, NOTHING, "Not Fast Infoset: the input is XML text; use fitool encode\n", {}},
		{"check given XML text with a byte order mark", {"check"}, "bom.xml", 1, NOTHING,
			"fitool: (standard input): Not Fast Infoset: the input is XML text; use fitool encode\n", {}},
		{"encode given Fast Infoset", {"encode", "{dir}/doc.fi"}, "", 1, NOTHING,
			"fitool: {dir}/doc.fi: Not XML text: the input is Fast Infoset; use fitool decode\n", {}},
		{"stats given Fast Infoset", {"stats", "-"}, "doc.fi", 1, NOTHING, "Not XML text: the input is Fast Infoset; use fitool dump\n", {}},

		// Several files
		{"one input goes to standard output", {"encode", "{dir}/one.xml"}, "", 0, FI, NOTHING, {{"one.fi", ABSENT}}},
		{"several inputs go beside them; an existing output stays", {"encode", "{dir}/one.xml", "{dir}/two.xml", "{dir}/tiny.xml"}, "", 1, NOTHING,
			"fitool: {dir}/two.fi: File exists: use -f (--force) to replace it\n", {{"one.fi", FI}, {"two.fi", "old"}, {"tiny.fi", FI}}},
		{"-f replaces existing outputs", {"encode", "-f", "{dir}/one.xml", "{dir}/two.xml"}, "", 0, NOTHING, NOTHING, {{"one.fi", FI}, {"two.fi", FI}}},
		{"decode replaces .fi by .xml, or appends .xml", {"decode", "{dir}/doc.fi", "{dir}/noname"}, "", 0, NOTHING, NOTHING,
			{{"doc.xml", "<!--"}, {"noname.xml", "<r/>"}}},
		{"-o DIR puts outputs into the folder, the others still done", {"decode", "{dir}/bad.fi", "{dir}/doc.fi", "-o", "{dir}/out"}, "", 1, NOTHING,
			"fitool: {dir}/bad.fi: FastInfoset Parse Exception: ", {{"out/doc.xml", "<!--"}, {"out/bad.xml", ABSENT}, {"doc.xml", ABSENT}}},
		{"-o DIR for one input", {"encode", "{dir}/one.xml", "-o", "{dir}/out"}, "", 0, NOTHING, NOTHING, {{"out/one.fi", FI}}},
		{"-o FILE replaces it for one input", {"encode", "{dir}/two.xml", "-o", "{dir}/two.fi"}, "", 0, NOTHING, NOTHING, {{"two.fi", FI}}},
		{"several inputs need a folder", {"encode", "{dir}/one.xml", "{dir}/two.xml", "-o", "{dir}/one.fi"}, "", 2, NOTHING,
			"fitool: Bad usage: with several inputs, -o names a folder: {dir}/one.fi\n", {{"one.fi", ABSENT}}},
		{"standard input is not one of several", {"encode", "-", "{dir}/one.xml"}, "one.xml", 2, NOTHING, "fitool: Bad usage: standard input has no name", {}},
		{"- is standard input", {"decode", "-"}, "tiny.fi", 0, "<r/>\n", NOTHING, {}},

		// check
		{"check is silent on sound documents", {"check", "{dir}/doc.fi", "{dir}/tiny.fi"}, "", 0, NOTHING, NOTHING, {}},
		{"check reads standard input", {"check"}, "doc.fi", 0, NOTHING, NOTHING, {}},
		{"check names the bad document and goes on", {"check", "{dir}/bad.fi", "{dir}/doc.fi", "-v"}, "", 1,
			"{dir}/doc.fi: 3338 octets, 27 elements, 26 attributes, ",
			"fitool: {dir}/bad.fi: FastInfoset Parse Exception: Unexpected end of stream while parsing octet string (at octet 3000)\n", {}},
		{"check -v counts", {"check", "-v", "{dir}/tiny.fi"}, "", 0,
			"{dir}/tiny.fi: 9 octets, 1 element, 0 attributes, 0 octets of text, 0 comments, 0 processing instructions\n", NOTHING, {}},

		// -q and -v
		{"-v tells sizes and ratio", {"encode", "-v", "{dir}/one.xml", "-o", "{dir}/x.fi"}, "", 0, NOTHING,
			"{dir}/one.xml -> {dir}/x.fi: 4006 -> 3296 octets (82.3%)\n", {}},
		{"the last of -v and -q counts", {"encode", "-v", "-q", "{dir}/one.xml", "-o", "{dir}/x.fi"}, "", 0, NOTHING, NOTHING, {}},

		// One document, or a stream of them
		{"decode refuses data after the document", {"decode", "{dir}/stream.fi"}, "", 1, "<r/>\n",
			"fitool: {dir}/stream.fi: Trailing data: data after the end of the document at octet 9\n", {}},
		{"decode --multiple writes each document in order", {"decode", "--multiple", "{dir}/stream.fi"}, "", 0, "<r/>\n<two/>\n<r/>\n", NOTHING, {}},
		{"decode --multiple reads a pipe", {"decode", "--multiple"}, "stream.fi", 0, "<r/>\n<two/>\n<r/>\n", NOTHING, {}},
		{"decode --multiple names the document that fails", {"decode", "--multiple", "{dir}/junk.fi"}, "", 1, "<r/>\n",
			"fitool: {dir}/junk.fi: document 2 at octet 9: FastInfoset Exception: Not a valid Fast Infoset document (invalid header)", {}},
		{"check refuses data after the document on a pipe", {"check"}, "stream.fi", 1, NOTHING,
			"fitool: (standard input): Trailing data: data after the end of the document at octet 9\n", {}},
		{"check --multiple checks them all", {"check", "--multiple", "-v", "{dir}/stream.fi", "{dir}/doc.fi"}, "", 0,
			"{dir}/stream.fi: document 3 at octet 20: 9 octets, 1 element, ", NOTHING, {}},
		{"dump lists the document and refuses what follows", {"dump", "{dir}/stream.fi"}, "", 1, "  end of document\n",
			"fitool: {dir}/stream.fi: Trailing data: data after the end of the document at octet 9\n", {}},
		{"dump --multiple lists them all", {"dump", "--multiple"}, "stream.fi", 0,
			"\nDocument 3 at octet 20\nFast Infoset document, 9 octets\n", NOTHING, {}},

		// Notations and unparsed entities
		{"decode gives notations and unparsed entities back", {"decode", "{dir}/notations.fi"}, "", 0,
			"<!DOCTYPE doc [<!NOTATION gif SYSTEM \"image/gif\"><!ENTITY pic SYSTEM \"pic.gif\" NDATA gif>]><doc/>\n", NOTHING, {}},

		// Limits for documents from strangers
		{"an external vocabulary is not loaded by default", {"decode", "{dir}/against.fi", "-o", "{dir}/against.xml"}, "", 1, NOTHING,
			"fitool: {dir}/against.fi: FastInfoset Exception: External vocabulary loading is disabled "
			"(FastInfosetParser::setLoadExternalVocabularies): {dir}/vocabulary.xml (at octet ", {{"against.xml", ABSENT}}},
		{"nor by check, and --no-external-vocabularies stays", {"check", "--no-external-vocabularies", "{dir}/against.fi"}, "", 1, NOTHING,
			"External vocabulary loading is disabled", {}},
		{"nor by convert", {"convert", "{dir}/against.fi"}, "", 1, NOTHING, "External vocabulary loading is disabled", {}},
		{"decode loads it when allowed", {"decode", "--load-external-vocabularies", "{dir}/against.fi"}, "", 0,
			"<v xmlns=\"urn:v\"><name kind=\"k\">text</name></v>\n", NOTHING, {}},
		{"dump loads it when allowed", {"dump", "--load-external-vocabularies", "{dir}/against.fi"}, "", 0,
			"    external vocabulary: \"{dir}/vocabulary.xml\"\n      loaded\n", NOTHING, {}},
		{"an amplifying document is refused", {"decode", "{dir}/amplifying.fi", "-o", "{dir}/amplified.xml"}, "", 1, NOTHING,
			"fitool: {dir}/amplifying.fi: FastInfoset Parse Exception: Amplification limit exceeded: ", {{"amplified.xml", ABSENT}}},
		{"by dump too", {"dump", "{dir}/amplifying.fi"}, "", 1, "Fast Infoset document", "Amplification limit exceeded: ", {}},
		{"a higher threshold lets it pass", {"check", "--amplification-threshold", "100000000", "{dir}/amplifying.fi"}, "", 0, NOTHING, NOTHING, {}},
		{"a higher factor lets it pass", {"check", "--max-amplification=5000", "{dir}/amplifying.fi"}, "", 0, NOTHING, NOTHING, {}},

		// Shared vocabularies: saml.voc is "urn:test:saml", built from one.xml;
		// named.fi is one.xml written naming it; other.voc is "urn:test:other".
		{"vocab builds from XML and Fast Infoset samples", {"vocab", "{dir}/one.xml", "{dir}/tiny.fi", "-o", "{dir}/built.voc"}, "",
			0, NOTHING, NOTHING, {{"built.voc", FI}}},
		{"vocab -v tells the URI", {"vocab", "-v", "--uri", "urn:x", "{dir}/tiny.xml", "-o", "{dir}/built.voc"}, "", 0, NOTHING,
			"{dir}/built.voc: vocabulary urn:x from 1 sample, ", {}},
		{"vocab refuses a terminal", {"vocab", "{dir}/tiny.xml", "-o", "{tty}"}, "", 2, NOTHING,
			"fitool: Bad usage: a vocabulary is Fast Infoset, not written to a terminal", {}},
		{"vocab writes nothing when a sample fails", {"vocab", "{dir}/one.xml", "{dir}/bad.fi", "-o", "{dir}/built.voc"}, "", 1, NOTHING,
			"fitool: {dir}/bad.fi: FastInfoset Parse Exception: ", {{"built.voc", ABSENT}}},
		{"encode --vocabulary", {"encode", "--vocabulary", "{dir}/saml.voc", "{dir}/one.xml", "-o", "{dir}/x.fi"}, "", 0, NOTHING, NOTHING,
			{{"x.fi", FI}}},
		{"decode --vocabulary", {"decode", "--vocabulary", "{dir}/saml.voc", "{dir}/named.fi"}, "", 0, "<Response IssueInstant=", NOTHING, {}},
		{"decode without it names its URI", {"decode", "{dir}/named.fi", "-o", "{dir}/named.xml"}, "", 1, NOTHING,
			"fitool: {dir}/named.fi: FastInfoset Exception: External vocabulary loading is disabled "
			"(FastInfosetParser::setLoadExternalVocabularies): urn:test:saml (at octet 21); give it with --vocabulary FILE\n",
			{{"named.xml", ABSENT}}},
		{"decode with another names both", {"decode", "--vocabulary", "{dir}/other.voc", "{dir}/named.fi"}, "", 1, NOTHING,
			"urn:test:saml (at octet 21); --vocabulary gives urn:test:other instead\n", {}},
		{"opening the URI is no help for a URN", {"decode", "--load-external-vocabularies", "{dir}/named.fi"}, "", 1, NOTHING,
			"External vocabulary is not a local file: urn:test:saml (at octet 21)\n", {}},
		{"convert --vocabulary", {"convert", "--vocabulary", "{dir}/saml.voc", "{dir}/named.fi"}, "", 0, "<Response IssueInstant=", NOTHING, {}},
		{"check --vocabulary, and documents that do not name it", {"check", "--vocabulary", "{dir}/saml.voc", "{dir}/named.fi", "{dir}/doc.fi"},
			"", 0, NOTHING, NOTHING, {}},
		{"check without it", {"check", "{dir}/named.fi"}, "", 1, NOTHING, "give it with --vocabulary FILE\n", {}},
		{"dump --vocabulary", {"dump", "--vocabulary", "{dir}/saml.voc", "{dir}/named.fi"}, "", 0,
			"    external vocabulary: \"urn:test:saml\"\n", NOTHING, {}},
		{"dump without it", {"dump", "{dir}/named.fi"}, "", 1, "    external vocabulary: \"urn:test:saml\"\n",
			"give it with --vocabulary FILE\n", {}},
		{"--vocabulary takes a vocabulary document", {"decode", "--vocabulary", "{dir}/doc.fi", "{dir}/named.fi"}, "", 1, NOTHING,
			"fitool: {dir}/doc.fi: Not a vocabulary: the document carries no vocabulary URI; make a vocabulary with fitool vocab\n", {}},
		{"--vocabulary is not XML", {"encode", "--vocabulary", "{dir}/one.xml", "{dir}/tiny.xml"}, "", 1, NOTHING,
			"fitool: {dir}/one.xml: Not a vocabulary: the file is not Fast Infoset; make a vocabulary with fitool vocab\n", {}},
		{"a missing --vocabulary", {"check", "--vocabulary", "{dir}/missing.voc", "{dir}/doc.fi"}, "", 1, NOTHING,
			"fitool: {dir}/missing.voc: File not found\n", {}},

		// Help
		{"fitool --help lists vocab", {"--help"}, "", 0, "  vocab     [options] [SAMPLE...]\n", NOTHING, {}},
		{"vocab --help", {"vocab", "--help"}, "", 0, "--max-string-length=N", NOTHING, {}},
		{"encode --help", {"encode", "--help"}, "", 0, "usage: fitool encode [options] [FILE...]", NOTHING, {}},
		{"help tells what standard input means", {"check", "--help"}, "", 0, "With no FILE, or when FILE is -, reads standard input.", NOTHING, {}},
		{"help tells where outputs go", {"decode", "--help"}, "", 0, "decode NAME.xml for NAME.fi", NOTHING, {}},
		{"help tells the limits", {"check", "--help"}, "", 0, "--amplification-threshold=N", NOTHING, {}},
	};

	const int master = posix_openpt(O_RDWR | O_NOCTTY);
	ASSERT_GE(master, 0) << "no terminal to test with";
	ASSERT_EQ(0, grantpt(master));
	ASSERT_EQ(0, unlockpt(master));
	const std::string terminal = ptsname(master);
	fcntl(master, F_SETFL, O_NONBLOCK);

	const std::string one = fileContent(FASTINFOSET_TEST_DATA "/saml-namespaced.xml");
	std::istringstream oneIn(one);
	std::ostringstream doc;
	Converter::convertToFIS(oneIn, doc, 0, 16);
	ASSERT_EQ(3338u, doc.str().size());
	std::istringstream tinyIn("<r/>");
	std::ostringstream tiny;
	Converter::convertToFIS(tinyIn, tiny, 0, 16);
	std::istringstream twoIn("<two/>");
	std::ostringstream two;
	Converter::convertToFIS(twoIn, two, 0, 16);
	const Outcome notations = fitool({"encode", "-o", path("notations.fi")},
		"<!DOCTYPE doc [<!NOTATION gif SYSTEM 'image/gif'><!ENTITY pic SYSTEM 'pic.gif' NDATA gif>]><doc/>");
	ASSERT_EQ(0, notations.status) << notations.err;
	const std::string notationsFI = fileContent(path("notations.fi"));

	// A document written against an external vocabulary, named by its path.
	const std::string vocabularyXML = "<v xmlns='urn:v'><name kind='k'>text</name></v>";
	const std::string vocabularyURI = path("vocabulary.xml");
	Poco::NullOutputStream nowhere;
	FastInfosetWriter collector(nowhere, false, DocumentVocabulary(vocabularyURI, DocumentVocabulary::VOC_HASH));
	feedXML(vocabularyXML, collector);
	std::ostringstream against;
	{
		FastInfosetWriter writer(against, false, collector.getDocumentVocabulary());
		writer.setExternalVocabulary(vocabularyURI, collector.getDocumentVocabulary());
		feedXML(vocabularyXML, writer);
	}

	// one.xml written naming a vocabulary built from it, and a vocabulary
	// of another URI.
	VocabularyBuilder samlSamples;
	std::istringstream samlIn(one);
	samlSamples.addXML(samlIn);
	std::ostringstream samlVocabulary;
	VocabularyDocument::save(samlSamples.vocabulary("urn:test:saml"), samlVocabulary);
	std::ostringstream named;
	{
		FastInfosetWriter writer(named);
		writer.setExternalVocabulary("urn:test:saml", samlSamples.vocabulary("urn:test:saml"));
		feedXML(one, writer);
	}
	VocabularyBuilder otherSamples;
	std::istringstream otherIn("<other/>");
	otherSamples.addXML(otherIn);
	std::ostringstream otherVocabulary;
	VocabularyDocument::save(otherSamples.vocabulary("urn:test:other"), otherVocabulary);

	// 13 KB that deliver one 10 KB chunk a thousand times: 10 MB by index.
	const std::string amplifying = writtenDocument([](FastInfosetWriter& w)
		{
			const std::string chunk(10000, 'a');
			w.setMaxIndexedStringLength(static_cast<int>(chunk.size()));
			w.startDocument();
			w.startElement("", "r", "");
			for (int i = 0; i < 1000; ++i)
			{
				w.characters(chunk);
				w.emptyElement("", "e", "");
			}
			w.endElement("", "r", "");
			w.endDocument();
		});

	for (const Case& c: CASES)
	{
		SCOPED_TRACE(c.what);
		const auto expand = [&](std::string text)
		{
			for (const auto& placeholder: {std::make_pair(std::string("{dir}"), _folder.path()), std::make_pair(std::string("{tty}"), terminal)})
			{
				for (std::string::size_type at; (at = text.find(placeholder.first)) != std::string::npos;)
					text.replace(at, placeholder.first.size(), placeholder.second);
			}
			return text;
		};
		_folder.remove(true);
		_folder.createDirectories();
		Poco::File(path("out")).createDirectory();
		write("one.xml", one);
		write("two.xml", "<two/>");
		write("tiny.xml", "<r/>");
		write("bom.xml", "\xEF\xBB\xBF\n<r/>");
		write("doc.fi", doc.str());
		write("tiny.fi", tiny.str());
		write("noname", tiny.str());
		write("bad.fi", doc.str().substr(0, 3000));
		write("two.fi", "old");
		write("stream.fi", tiny.str() + two.str() + tiny.str());
		write("junk.fi", tiny.str() + "junk");
		write("notations.fi", notationsFI);
		write("vocabulary.xml", vocabularyXML);
		write("against.fi", against.str());
		write("amplifying.fi", amplifying);
		write("saml.voc", samlVocabulary.str());
		write("named.fi", named.str());
		write("other.voc", otherVocabulary.str());

		std::vector<std::string> arguments;
		for (const std::string& argument: c.arguments) arguments.push_back(expand(argument));
		const Outcome run = fitool(arguments, c.input.empty() ? std::string() : fileContent(path(c.input)));
		char drained[4096];
		while (read(master, drained, sizeof(drained)) > 0) {}

		EXPECT_EQ(c.status, run.status) << run.err;
		for (const auto& stream: {std::make_pair(c.out, run.out), std::make_pair(c.err, run.err)})
		{
			if (stream.first == NOTHING) EXPECT_EQ("", stream.second);
			else EXPECT_NE(std::string::npos, stream.second.find(expand(stream.first))) << stream.second;
		}
		for (const auto& file: c.files)
		{
			if (file.second == ABSENT) EXPECT_FALSE(Poco::File(path(file.first)).exists()) << file.first;
			else EXPECT_EQ(file.second, fileContent(path(file.first)).substr(0, file.second.size())) << file.first;
		}
	}
	close(master);
}


TEST_F(ToolTest, OutputFilesAreReplacedSafely)
{
	std::istringstream xml("<r/>");
	std::ostringstream fi;
	Converter::convertToFIS(xml, fi, 0, 16);
	write("tiny.fi", fi.str());
	const std::string decoded = "<r/>\n";
	const auto mode = [this](const std::string& name)
	{
		struct stat status;
		return lstat(path(name).c_str(), &status) == 0 ? static_cast<int>(status.st_mode) : -1;
	};
	int fifo = -1;
	struct Case
	{
		const char* what;
		std::function<void()> prepare;
		std::string output;
		std::string out;   // what reaches standard output
		std::function<void()> verify;
	};
	const Case CASES[] =
	{
		{"a file keeps its mode", [&] { write("kept.xml", "old"); chmod(path("kept.xml").c_str(), 0604); }, "kept.xml", "", [&]
			{
				EXPECT_EQ(S_IFREG | 0604, mode("kept.xml"));
				EXPECT_EQ(decoded, fileContent(path("kept.xml")));
			}},
		{"a new file gets 0666 less the umask", [] {}, "new.xml", "", [&] { EXPECT_EQ(S_IFREG | 0640, mode("new.xml")); }},
		{"a link is followed and its target replaced", [&]
			{
				write("target.xml", "old");
				symlink("target.xml", path("link.xml").c_str());
			},
			"link.xml", "", [&]
			{
				EXPECT_TRUE(S_ISLNK(mode("link.xml")));
				EXPECT_EQ(decoded, fileContent(path("target.xml")));
			}},
		{"a dangling link gets its target", [&] { symlink("made.xml", path("dangling.xml").c_str()); }, "dangling.xml", "", [&]
			{
				EXPECT_TRUE(S_ISLNK(mode("dangling.xml")));
				EXPECT_EQ(decoded, fileContent(path("made.xml")));
			}},
		{"a FIFO is written, not replaced", [&]
			{
				mkfifo(path("fifo").c_str(), 0600);
				// Open for both, so that neither side waits for the other.
				fifo = open(path("fifo").c_str(), O_RDWR | O_NONBLOCK);
			},
			"fifo", "", [&]
			{
				EXPECT_TRUE(S_ISFIFO(mode("fifo")));
				char buffer[64];
				const ssize_t n = read(fifo, buffer, sizeof(buffer));
				EXPECT_EQ(decoded, std::string(buffer, n > 0 ? static_cast<std::size_t>(n) : 0));
				close(fifo);
			}},
		{"a link to an open descriptor is written through", [] {}, "/dev/fd/1", decoded, [] {}},
	};
	for (const Case& c: CASES)
	{
		SCOPED_TRACE(c.what);
		c.prepare();
		const mode_t umaskBefore = umask(027);
		const Outcome run = fitool({"decode", path("tiny.fi"), "-o", c.output[0] == '/' ? c.output : path(c.output)});
		umask(umaskBefore);
		EXPECT_EQ(0, run.status) << run.err;
		EXPECT_EQ(c.out, run.out);
		c.verify();
	}
	// No temporary file stays behind.
	for (const std::string& name: folderContent()) EXPECT_NE('.', name[0]) << name;
}


TEST_F(ToolTest, AReaderThatClosesThePipeEndsTheToolQuietly)
{
	std::string xml = "<r>";
	for (int i = 0; i < 20000; ++i) xml += "<item n='" + std::to_string(i) + "'>text " + std::to_string(i) + "</item>\n";
	xml += "</r>";
	std::istringstream in(xml);
	std::ostringstream fi;
	Converter::convertToFIS(in, fi, 0, 16);
	write("big.fi", fi.str());

	for (const char* command: {"decode", "dump"})
	{
		SCOPED_TRACE(command);
		Poco::Pipe outPipe;
		Poco::Pipe errPipe;
		// Callers may ignore the signal, and the tool inherits that.
		const auto previous = std::signal(SIGPIPE, SIG_IGN);
		Poco::ProcessHandle process = Poco::Process::launch(FITOOL_PATH, {command, path("big.fi")}, 0, &outPipe, &errPipe);
		std::signal(SIGPIPE, previous);
		char start[100];
		ASSERT_GT(outPipe.readBytes(start, sizeof(start)), 0);
		outPipe.close(Poco::Pipe::CLOSE_READ);
		std::string err;
		Poco::PipeInputStream errStream(errPipe);
		Poco::StreamCopier::copyToString(errStream, err);
		const int status = process.wait();
		// Ended by the signal, as the host reports it (a shell says 141), or
		// done.
		EXPECT_TRUE(status == 256 + SIGPIPE || status == 0) << status;
		EXPECT_EQ("", err);
	}
}


#else


TEST(ToolTest, NeedsTheTool)
{
	GTEST_SKIP() << "fitool is not built (FASTINFOSET_BUILD_TOOLS=OFF)";
}


#endif // FITOOL_PATH
