#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/Converter.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/VocabularyBuilder.h"
#include "Ixor/FastInfoset/VocabularyDocument.h"
#include "EventRecorder.h"
#include "TestSupport.h"
#include "Poco/File.h"
#include "Poco/SAX/InputSource.h"
#include "Poco/SAX/SAXParser.h"
#include "Poco/TemporaryFile.h"
#include <gtest/gtest.h>
#include <sstream>


using namespace Ixor::FastInfoset;
using namespace TestSupport;
using Ixor::XML::XMLReader;
typedef DocumentVocabulary DV;


namespace {


const std::string ORDER_1 =
	"<o:order xmlns:o='urn:o' o:id='1' currency='EUR'>\n"
	" <line sku='A-100' qty='2'>Brush</line>\n"
	" <line sku='B-200' qty='1'>Comb</line>\n"
	" <?note fragile?>\n"
	"</o:order>";
const std::string ORDER_2 =
	"<o:order xmlns:o='urn:o' o:id='2' currency='EUR'>\n"
	" <line sku='A-100' qty='1'>Brush</line>\n"
	" <total>7.50</total>\n"
	"</o:order>";


DocumentVocabulary built(const std::vector<std::string>& samples, VocabularyBuilder& builder, const std::string& uri = "urn:orders")
{
	for (const std::string& xml: samples)
	{
		std::istringstream in(xml);
		builder.addXML(in);
	}
	return builder.vocabulary(uri);
}


DocumentVocabulary built(const std::vector<std::string>& samples)
{
	VocabularyBuilder builder;
	return built(samples, builder);
}


std::vector<std::string> entries(const DocumentVocabulary& vocabulary, DV::ID id)
	/// The entries after those of a fresh vocabulary.
{
	const DocumentVocabulary fresh(DV::VOC_MAP);
	std::vector<std::string> result;
	for (unsigned int i = static_cast<unsigned int>(fresh.vocabulary(id)->size()); i < vocabulary.vocabulary(id)->size(); ++i)
		result.push_back(vocabulary.value(id, i));
	return result;
}


std::vector<std::string> names(const DocumentVocabulary& vocabulary, bool element)
{
	const Vocabulary<QualifiedNameEntry>& table = element ? *vocabulary.elementVocabulary() : *vocabulary.attributeVocabulary();
	std::vector<std::string> result;
	for (unsigned int i = 1; i < table.size(); ++i)
	{
		const QualifiedNameEntry& name = table.value(i);
		result.push_back(vocabulary.value(DV::PREFIX, name.prefixId()) + "|" + vocabulary.value(DV::NAMESPACE_NAME, name.namespaceId())
			+ "|" + vocabulary.value(DV::LOCAL_NAME, name.localNameId()));
	}
	return result;
}


std::string saved(const DocumentVocabulary& vocabulary)
{
	std::ostringstream out;
	VocabularyDocument::save(vocabulary, out);
	return out.str();
}


DocumentVocabulary loaded(const std::string& document, DV::VocabularyImpl impl)
{
	std::istringstream in(document);
	return VocabularyDocument::load(in, impl);
}


bool equal(const DocumentVocabulary& a, const DocumentVocabulary& b)
{
	return a.getURI() == b.getURI() && VocabularyDocument::startsWith(a, b) && VocabularyDocument::startsWith(b, a);
}


std::string encoded(const std::string& xml, const DocumentVocabulary* pVocabulary)
	/// The document as the converter writes it with map tables, naming the
	/// vocabulary when one is given.
{
	std::ostringstream out;
	{
		FastInfosetWriter writer(out, false, DV::VOC_MAP);
		if (pVocabulary) writer.setExternalVocabulary(pVocabulary->getURI(), *pVocabulary);
		std::istringstream in(xml);
		Converter::convertToFIS(in, writer);
	}
	return out.str();
}


std::vector<std::string> events(FastInfosetParser& parser, const std::string& document)
{
	EventRecorder recorder;
	recorder.attachTo(parser);
	parser.parseMemoryNP(document.data(), document.size());
	return recorder.lines;
}


DocumentVocabulary largeVocabulary(DV::VocabularyImpl impl)
	/// 1000 entries in every table, names with and without prefix and
	/// namespace, and an alphabet.
{
	DocumentVocabulary vocabulary("urn:large", impl);
	bool found = false;
	for (int i = 0; i < 1000; ++i)
	{
		const std::string n = std::to_string(i);
		for (int id = DV::PREFIX; id <= DV::CONTENT_CHARACTER_CHUNK; ++id) vocabulary.index(static_cast<DV::ID>(id), "s" + n, found);
		const unsigned int k = static_cast<unsigned int>(i % 3 == 0 ? 0 : i + 2);
		vocabulary.elementVocabulary()->index(QualifiedNameEntry(k, k, static_cast<unsigned int>(i + 1)), found);
		vocabulary.attributeVocabulary()->index(QualifiedNameEntry(0, k, static_cast<unsigned int>(1000 - i)), found);
	}
	vocabulary.restrictedAlphabets().add("abc");
	return vocabulary;
}


} // namespace


TEST(VocabularyBuilderTest, EveryNameGoesInTheMostUsedFirst)
{
	const DocumentVocabulary vocabulary = built({ORDER_1, ORDER_2});
	EXPECT_EQ((std::vector<std::string>{"o"}), entries(vocabulary, DV::PREFIX));
	EXPECT_EQ((std::vector<std::string>{"urn:o"}), entries(vocabulary, DV::NAMESPACE_NAME));
	// line 3, qty 3, sku 3, order 2, ... ties by value.
	EXPECT_EQ((std::vector<std::string>{"line", "qty", "sku", "currency", "id", "order", "total"}), entries(vocabulary, DV::LOCAL_NAME));
	EXPECT_EQ((std::vector<std::string>{"note"}), entries(vocabulary, DV::OTHER_NCNAME));
	EXPECT_EQ((std::vector<std::string>{"||line", "o|urn:o|order", "||total"}), names(vocabulary, true));
	EXPECT_EQ((std::vector<std::string>{"||qty", "||sku", "||currency", "o|urn:o|id"}), names(vocabulary, false));
}


TEST(VocabularyBuilderTest, StringsThatSaveMostGoIn)
{
	// Saved octets are samples * length: "A-100" 2*5, "EUR" 2*3, "B-200"
	// 1*5, "1" and "2" 2*1. Kept, they are ordered by use.
	struct { std::size_t count; std::size_t length; std::vector<std::string> values; } cases[] =
	{
		{100, 64, {"1", "2", "A-100", "EUR", "B-200"}},
		{2,   64, {"A-100", "EUR"}},
		{3,   64, {"A-100", "EUR", "B-200"}},
		{100, 3,  {"1", "2", "EUR"}},
		{0,   64, {}},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(testing::Message() << c.count << " of at most " << c.length);
		VocabularyBuilder builder;
		builder.setMaxAttributeValues(c.count);
		builder.setMaxStringLength(c.length);
		EXPECT_EQ(c.values, entries(built({ORDER_1, ORDER_2}, builder), DV::ATTRIBUTE_VALUE));
	}
	VocabularyBuilder builder;
	builder.setMaxCharacterChunks(4);
	// The text between two tags is one chunk, as the writer writes it:
	// "\n " 5 times in two samples saves 3 octets each, "Brush" 2*5, "Comb"
	// and "7.50" 4 each; "\n" twice saves less.
	EXPECT_EQ((std::vector<std::string>{"\n ", "Brush", "7.50", "Comb"}), entries(built({ORDER_1, ORDER_2}, builder), DV::CONTENT_CHARACTER_CHUNK));
}


TEST(VocabularyBuilderTest, IndentationGoesInAsDeepAgainAsTheSamplesWent)
{
	// Indented by two spaces to depth 2 (four spaces): depths 3 and 4 are
	// added after the samples' own chunks, up to the longest string taken
	// and while there is room. Without a constant step (one depth, or
	// spaces and tabs mixed) nothing is added.
	const std::string twoDeep = "<a>\n  <b>\n    <c/>\n  </b>\n</a>";
	const std::string sixSpaces = "\n      ";
	const std::string eightSpaces = "\n        ";
	struct { const char* what; std::string sample; std::size_t chunks; std::size_t length; std::vector<std::string> added; } cases[] =
	{
		{"two depths", twoDeep, 256, 64, {sixSpaces, eightSpaces}},
		{"no room for the last", twoDeep, 4, 64, {sixSpaces}},
		{"the longest string taken", twoDeep, 256, 7, {sixSpaces}},
		{"one depth", "<a>\n  <b/>\n</a>", 256, 64, {}},
		{"spaces and tabs", "<a>\n  <b>\n\t\t<c/>\n  </b>\n</a>", 256, 64, {}},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.what);
		VocabularyBuilder builder;
		builder.setMaxCharacterChunks(c.chunks);
		builder.setMaxStringLength(c.length);
		std::vector<std::string> chunks = entries(built({c.sample}, builder), DV::CONTENT_CHARACTER_CHUNK);
		const std::size_t own = chunks.size() - c.added.size();
		ASSERT_LE(c.added.size(), chunks.size());
		EXPECT_EQ(c.added, std::vector<std::string>(chunks.begin() + static_cast<std::ptrdiff_t>(own), chunks.end()));
	}
}


TEST(VocabularyBuilderTest, SamplesGiveOneVocabularyInAnyOrderAndForm)
{
	const std::string expected = toHex(saved(built({ORDER_1, ORDER_2})));
	EXPECT_EQ(expected, toHex(saved(built({ORDER_2, ORDER_1}))));
	// Read from Fast Infoset, attributes come without qualified name: the
	// prefix is the one declared for their namespace.
	VocabularyBuilder builder;
	for (const std::string& xml: {ORDER_1, ORDER_2})
	{
		const std::string document = encoded(xml, 0);
		FastInfosetParser parser;
		parser.setContentHandler(&builder);
		parser.parseMemoryNP(document.data(), document.size());
	}
	EXPECT_EQ(2u, builder.sampleCount());
	EXPECT_EQ(expected, toHex(saved(builder.vocabulary("urn:orders"))));
}


TEST(VocabularyBuilderTest, SavedVocabulariesLoadBackEqual)
{
	const DocumentVocabulary small = built({ORDER_1, ORDER_2});
	for (DV::VocabularyImpl impl: {DV::VOC_MAP, DV::VOC_HASH, DV::VOC_VECTOR})
	{
		SCOPED_TRACE(impl);
		const DocumentVocabulary back = loaded(saved(small), impl);
		EXPECT_EQ(impl, back.impl());
		EXPECT_TRUE(equal(small, back));
		EXPECT_EQ(saved(small), saved(back));
	}
	// Tables longer than 128 entries, in every table; hash tables cannot
	// take 1000 other URIs.
	for (DV::VocabularyImpl impl: {DV::VOC_MAP, DV::VOC_VECTOR})
	{
		SCOPED_TRACE(impl);
		const DocumentVocabulary large = largeVocabulary(impl);
		const DocumentVocabulary back = loaded(saved(large), DV::VOC_MAP);
		EXPECT_TRUE(equal(large, back));
		EXPECT_EQ("abc", back.restrictedAlphabets().alphabet(16).characters());
	}
	EXPECT_EQ("Vocabulary hash table full", messageOf<Ixor::PoolOverflowException>([] { loaded(saved(largeVocabulary(DV::VOC_MAP)), DV::VOC_HASH); }));
	// A vocabulary without names or URI still makes a document.
	EXPECT_TRUE(equal(DocumentVocabulary(DV::VOC_MAP), loaded(saved(DocumentVocabulary(DV::VOC_MAP)), DV::VOC_MAP)));
}


TEST(VocabularyBuilderTest, InitialVocabulariesCarryEveryTableInTheirForm)
{
	DocumentVocabulary vocabulary(DV::VOC_MAP);
	bool found = false;
	vocabulary.index(DV::ATTRIBUTE_VALUE, "v", found);
	vocabulary.index(DV::LOCAL_NAME, "e", found);
	vocabulary.elementVocabulary()->index(QualifiedNameEntry(1, 1, 1), found);
	std::ostringstream out;
	{
		FastInfosetWriter writer(out, false, vocabulary);
		writer.startDocument();
		writer.endDocument();
	}
	// header e0 00 00 01, 0 0100000; 000 0 0 0 0 0 1 (local names) 0 0 1
	// (attribute values) 0 0 1 (element names) 0: 00 92;
	// local names: 00, 0 0000000 "e";
	// attribute values: 00, 00 00 0000 "v" (two padding bits, UTF-8, length 1);
	// element names: 00, 000000 1 1 (prefix and namespace), 0 0000000 (1), 0 0000000 (1), 0 0000000 (1);
	// then the end of the document: f0
	EXPECT_EQ("e0000001" "20" "0092" "000065" "000076" "00" "03000000" "f0", toHex(out.str()));
}


TEST(VocabularyBuilderTest, DocumentsNameTheVocabularyAndCarryOnlyWhatItLacks)
{
	const std::vector<std::string> samples = {ORDER_1, ORDER_2};
	const DocumentVocabulary vocabulary = loaded(saved(built(samples)), DV::VOC_MAP);
	const std::string order =
		"<o:order xmlns:o='urn:o' o:id='3' currency='EUR'>\n <line sku='A-100' qty='2'>Brush</line>\n</o:order>";
	const std::string without = encoded(order, 0);
	const std::string with = encoded(order, &vocabulary);
	// Only the URI goes into the initial vocabulary: 0 0100000, 000 1
	// (external) and twelve 0 bits, 0 0001001 (length 10), the URI.
	EXPECT_EQ("e0000001" "20" "1000" "09" + toHex("urn:orders"), toHex(with.substr(0, 18)));
	EXPECT_EQ(std::string::npos, with.find("currency"));
	EXPECT_LT(with.size() * 2, without.size());
	const DocumentVocabulary asRead = VocabularyDocument::withTables(vocabulary, DV::VOC_VECTOR);
	EXPECT_EQ(toHex(with), toHex(encoded(order, &asRead)));

	FastInfosetParser plain;
	FastInfosetParser prepared(VocabularyDocument::withTables(vocabulary, DV::VOC_VECTOR));
	prepared.setLoadExternalVocabularies(false);
	EXPECT_EQ("", firstDifference(events(plain, without), events(prepared, with)));

	// Loaded by a parser from the URI the document names, the vocabulary
	// document gives the same tables.
	Poco::TemporaryFile file;
	VocabularyBuilder builder;
	const DocumentVocabulary named = built(samples, builder, file.path());
	VocabularyDocument::save(named, file.path());
	FastInfosetParser loading;
	loading.setLoadExternalVocabularies(true);
	EXPECT_EQ("", firstDifference(events(plain, without), events(loading, encoded(order, &named))));
}


TEST(VocabularyBuilderTest, LoadingRefusesWhatItCannotHold)
{
	DocumentVocabulary twice(DV::VOC_VECTOR);
	bool found = false;
	twice.index(DV::LOCAL_NAME, "a", found);
	twice.index(DV::LOCAL_NAME, "a", found);
	EXPECT_EQ("Vocabulary table holds a value twice", messageOf<FISException>([&] { VocabularyDocument::withTables(twice, DV::VOC_MAP); }));
	EXPECT_EQ("Not a valid Fast Infoset document (invalid header) (at octet 2)", messageOf<FISException>([] { loaded("<a/>", DV::VOC_MAP); }));
	EXPECT_THROW(VocabularyDocument::load("/nonexistent/vocabulary.fi"), Ixor::FileNotFoundException);
}
