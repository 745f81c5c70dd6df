//
// ResourceTest.cpp
//
// What a document from a stranger can make the parser spend: the largest
// single allocation, the memory held, the growth of the vocabulary and the
// time of a parse, over adversarial documents.
//
// This file is a test program of its own: it replaces the global operator
// new to count allocations, which must not change the other tests.
//


#include "Ixor/FastInfoset/Converter.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/FISException.h"
#include "DocumentBits.h"
#include "NullHandler.h"
#include "Reading.h"
#include "TestSupport.h"
#include "Poco/SAX/DefaultHandler.h"
#include <gtest/gtest.h>
#include <malloc.h>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <new>
#include <sstream>
#include <stdexcept>


using namespace Ixor::FastInfoset;
using namespace TestSupport;


//
// Counting allocator
//
namespace {


struct Allocations
	/// Counted only while a Measure lives, on the thread that made it.
{
	bool        active = false;
	std::size_t largest = 0;
	std::size_t live = 0;
	std::size_t peak = 0;
	std::size_t limit = 0;
	std::size_t count = 0;
};


thread_local Allocations allocations;


void* allocate(std::size_t size)
{
	if (allocations.active)
	{
		++allocations.count;
		if (size > allocations.largest) allocations.largest = size;
		// Beyond the limit the parse fails here rather than the machine.
		if (allocations.live + size > allocations.limit) throw std::bad_alloc();
	}
	void* p = std::malloc(size ? size : 1);
	if (!p) throw std::bad_alloc();
	if (allocations.active)
	{
		allocations.live += malloc_usable_size(p);
		if (allocations.live > allocations.peak) allocations.peak = allocations.live;
	}
	return p;
}


void release(void* p) noexcept
{
	if (!p) return;
	if (allocations.active)
	{
		const std::size_t size = malloc_usable_size(p);
		allocations.live = allocations.live > size ? allocations.live - size : 0;
	}
	std::free(p);
}


} // namespace


void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { try { return allocate(size); } catch (...) { return nullptr; } }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { try { return allocate(size); } catch (...) { return nullptr; } }
void operator delete(void* p) noexcept { release(p); }
void operator delete[](void* p) noexcept { release(p); }
void operator delete(void* p, std::size_t) noexcept { release(p); }
void operator delete[](void* p, std::size_t) noexcept { release(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { release(p); }


namespace {


const std::size_t KB = 1024;
const std::size_t MB = 1024 * KB;

// Scratch buffers, the first chunk of a table, a stream buffer.
const std::size_t SMALL_ALLOCATION = 64 * KB;
const std::size_t MEMORY_LIMIT = 512 * MB;

// Typed values have a longer text form than their octets: eight booleans
// per octet, "false " each, is the most. Strings and vectors may double
// their capacity when they grow.
const std::size_t TEXT_PER_OCTET = 48;
const std::size_t GROWTH = 2;

#if defined(__SANITIZE_ADDRESS__)
const double SECONDS = 5;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
const double SECONDS = 5;
#else
const double SECONDS = 1;
#endif
#else
const double SECONDS = 1;
#endif


struct Measure
{
	explicit Measure(std::size_t limit = MEMORY_LIMIT)
	{
		allocations = Allocations();
		allocations.limit = limit;
		allocations.active = true;
	}

	~Measure()
	{
		allocations.active = false;
	}
};


struct Outcome
{
	std::string error;          // empty for a document that parsed
	std::size_t largest = 0;    // the largest single allocation
	std::size_t peak = 0;       // the most memory held at once
	std::size_t entries = 0;    // entries the document added to the vocabulary
	double      seconds = 0;
};


std::size_t entriesOf(const DocumentVocabulary& vocabulary)
	/// Every entry beyond those of a fresh vocabulary.
{
	const DocumentVocabulary fresh(DocumentVocabulary::VOC_VECTOR);
	std::size_t entries = vocabulary.elementVocabulary()->size() + vocabulary.attributeVocabulary()->size()
		+ vocabulary.restrictedAlphabets().alphabets().size()
		- fresh.elementVocabulary()->size() - fresh.attributeVocabulary()->size() - fresh.restrictedAlphabets().alphabets().size();
	for (int id = DocumentVocabulary::PREFIX; id <= DocumentVocabulary::CONTENT_CHARACTER_CHUNK; ++id)
	{
		const DocumentVocabulary::ID table = static_cast<DocumentVocabulary::ID>(id);
		entries += vocabulary.vocabulary(table)->size() - fresh.vocabulary(table)->size();
	}
	return entries;
}


double cpuSeconds()
	/// The time this thread has run: the limits are about the work a
	/// document causes, not about what else the machine is doing.
{
	timespec now;
	clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
	return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}


Outcome parse(const std::string& document, Reading reading = Reading::MEMORY, Ixor::UInt64 amplificationThreshold = FastInfosetParser::DEFAULT_AMPLIFICATION_THRESHOLD)
{
	Ixor::XML::DefaultHandler handler;   // plain: typed values cost their text
	FastInfosetParser parser;
	parser.setContentHandler(&handler);
	parser.setAmplificationThreshold(amplificationThreshold);
	Input input(document, reading);

	Outcome outcome;
	double started = 0;
	{
		Measure measure;
		started = cpuSeconds();
		try
		{
			input.parse(parser);
		}
		catch (const Ixor::Exception& exc)
		{
			outcome.error = exc.message();
		}
		catch (const std::exception& exc)
		{
			outcome.error = std::string("unexpected ") + exc.what();
		}
		outcome.seconds = cpuSeconds() - started;
		outcome.largest = allocations.largest;
		outcome.peak = allocations.peak;
	}
	outcome.entries = entriesOf(parser.vocabulary());
	return outcome;
}


struct Document: public DocumentBits
	/// A document put together field by field, from its header on.
{
	Document()
	{
		header();
	}

	DocumentBits& root()
		/// No header parts, then the element "r" that index 1 names later.
	{
		return bits(0, 7).bits(0x3C, 8).literal("r");
	}
};


const unsigned long HUGE = 4000000000ul;


std::string chunkOfAlgorithm(unsigned int algorithm, unsigned long claimed, const std::string& octets)
	/// A root element holding one chunk of the algorithm.
{
	return Document().root().bits(2, 2).bits(0, 2).bits(3, 2).integer(algorithm).length(claimed).raw(octets).done();
}


struct Case
{
	const char* what;
	std::string document;
};


std::vector<Case> hugeLengthCases()
	/// Every place where the parser reads a length, each claiming about 4 GB
	/// and followed by a few octets.
{
	const std::string some(20, 'x');
	std::vector<Case> cases =
	{
		{"XML declaration without end", "<?xml " + std::string(100, ' ')},
		{"additional data", Document().bits(0x40, 7).bits(0x80, 8).bits(0, 16).bits(0, 1).length(HUGE).raw(some).done()},
		{"external vocabulary URI", Document().bits(0x20, 7).bits(0x1000, 16).bits(0, 1).length(HUGE).raw(some).done()},
		{"restricted alphabet", Document().bits(0x20, 7).bits(0x0800, 16).bits(0, 8).bits(0, 1).length(HUGE).raw(some).done()},
		{"prefix table with a million entries", Document().bits(0x20, 7).bits(0x0200, 16).bits(0x8F, 8).bits(0xFFFF, 16).bits(0, 1).string("p").done()},
		{"local name", Document().bits(0, 7).bits(0x3C, 8).bits(0, 1).length(HUGE).raw(some).done()},
		{"namespace name", Document().bits(0, 7).bits(0x3D, 8).bits(0, 1).length(HUGE).raw(some).done()},
		{"character chunk", Document().root().bits(2, 2).bits(0, 4).length(HUGE).raw(some).done()},
		{"UTF-16 chunk", Document().root().bits(2, 2).bits(0, 2).bits(1, 2).length(HUGE).raw(some).done()},
		{"alphabet chunk", Document().root().bits(2, 2).bits(0, 2).bits(2, 2).integer(1).length(HUGE).raw(some).done()},
		{"attribute value", Document().bits(0, 7).bits(0x7C, 8).bits(0, 1).string("r").bits(0x78, 8).bits(0, 1).string("a")
			.bits(0, 4).length(HUGE).raw(some).done()},
		{"comment", Document().root().bits(0xE2, 8).bits(0, 4).length(HUGE).raw(some).done()},
		{"processing instruction", Document().root().bits(0xE1, 8).bits(0, 1).string("t").bits(0, 4).length(HUGE).raw(some).done()},
	};
	for (unsigned int algorithm = 1; algorithm <= 10; ++algorithm)
	{
		cases.push_back({"typed value", chunkOfAlgorithm(algorithm, HUGE - HUGE % 16, some)});
	}
	return cases;
}


} // namespace


TEST(ResourceTest, LengthsBeyondTheInputAllocateNothingBig)
{
	for (const Case& c: hugeLengthCases())
	{
		for (Reading reading: READINGS)
		{
			SCOPED_TRACE(testing::Message() << c.what << " " << reading);
			const Outcome outcome = parse(c.document, reading);
			EXPECT_FALSE(outcome.error.empty());
			EXPECT_EQ(std::string::npos, outcome.error.find("unexpected"));
			EXPECT_LE(outcome.largest, SMALL_ALLOCATION);
		}
	}
}


namespace {


std::vector<Case> largeCases()
	/// Documents of up to 1 MB that are cheap to write and make the parser
	/// work: many small items, long items, deep nesting.
{
	const std::size_t N = 300000;
	return
	{
		{"tiny chunks added to the table",
			Document().root().repeat(N, [](DocumentBits& d) { d.bits(0x90, 8).bits('x', 8); }).bits(0xFF, 8).done()},
		{"tiny comments added to the table",
			Document().root().repeat(N, [](DocumentBits& d) { d.bits(0xE2, 8).bits(0x40, 8).bits('x', 8); }).bits(0xFF, 8).done()},
		{"element names added to the table",
			// Each element ends in the octet where the next one starts.
			Document().root().repeat(N / 2, [](DocumentBits& d) { d.bits(0x3C, 8).bits(0, 1).string("e").bits(0xF, 4).bits(0, 4); })
				.bits(0x3C, 8).bits(0, 1).string("e").bits(0xFFF, 12).done()},
		{"local names of the initial vocabulary",
			Document().bits(0x20, 7).bits(0x0080, 16).bits(0x8F, 8).bits(0xFFFF, 16)
				.repeat(N, [](DocumentBits& d) { d.bits(0, 1).string("n"); }).done()},
		{"alphabets of the initial vocabulary",
			Document().bits(0x20, 7).bits(0x0800, 16).bits(0x8F, 8).bits(0xFFFF, 16)
				.repeat(N, [](DocumentBits& d) { d.bits(0, 1).string("ab"); }).done()},
		{"one long chunk", Document().root().bits(2, 2).bits(0, 4).string(std::string(MB - 100, 'x')).bits(0xFF, 8).done()},
		{"one long boolean value", chunkOfAlgorithm(6, MB - 100, std::string(MB - 100, '\x55')) + '\xff'},
		{"deep nesting", Document().root().repeat(MB - 100, [](DocumentBits& d) { d.bits(0, 8); }).done()},
		{"nesting to the limit", Document().root().repeat(9999, [](DocumentBits& d) { d.bits(0, 8); })
			.repeat(5000, [](DocumentBits& d) { d.bits(0xFF, 8); }).bits(0xF0, 8).done()},
		{"many namespace declarations",
			Document().bits(0, 7).bits(0x38, 8).repeat(MB - 100, [](DocumentBits& d) { d.bits(0xCC, 8); })
				.bits(0xF, 4).bits(0, 6).bits(0xF, 4).bits(0, 2).bits(0, 1).string("r").bits(0xFF, 8).done()},
		{"many attributes",
			Document().bits(0, 7).bits(0x7C, 8).bits(0, 1).string("r").bits(0x78, 8).bits(0, 1).string("a").bits(0x40, 8).bits('v', 8)
				.repeat(N, [](DocumentBits& d) { d.bits(0x00, 8).bits(0x80, 8); }).bits(0xFF, 8).bits(0xF0, 8).done()},
		{"a long attribute value repeated by index",
			Document().bits(0, 7).bits(0x7C, 8).bits(0, 1).string("r").bits(0x78, 8).bits(0, 1).string("a").bits(0x4, 4)
				.string(std::string(MB / 2, 'v')).repeat(N / 2, [](DocumentBits& d) { d.bits(0x00, 8).bits(0x80, 8); }).bits(0xFF, 8).bits(0xF0, 8).done()},
		{"a long attribute value repeated on many elements",
			Document().bits(0, 7).bits(0x7C, 8).bits(0, 1).string("r").bits(0x78, 8).bits(0, 1).string("a").bits(0x4, 4)
				.string(std::string(2 * MB / 5, 'v')).bits(0xF, 4).bits(0, 4)
				.repeat(N / 2, [](DocumentBits& d) { d.bits(0x40, 8).bits(0x00, 8).bits(0x80, 8).bits(0xFF, 8); }).bits(0xFF, 8).done()},
	};
}


} // namespace


TEST(ResourceTest, LargeDocumentsStayWithinTimeMemoryAndVocabulary)
{
	for (const Case& c: largeCases())
	{
		SCOPED_TRACE(c.what);
		ASSERT_LT(c.document.size(), MB);
		const Outcome outcome = parse(c.document);
		EXPECT_EQ(std::string::npos, outcome.error.find("unexpected")) << outcome.error;
		EXPECT_LT(outcome.seconds, SECONDS);
		// Every entry takes at least one octet of the document.
		EXPECT_LE(outcome.entries, c.document.size());
		EXPECT_LE(outcome.largest, SMALL_ALLOCATION + GROWTH * TEXT_PER_OCTET * c.document.size());
		EXPECT_LE(outcome.peak, MB + 2 * GROWTH * TEXT_PER_OCTET * c.document.size());
	}
}


TEST(ResourceTest, QualifiedNamesTakeMemoryInProportionToTheInput)
{
	// Literal qualified names that point by index to long prefixes and local
	// names: each element is reported as "prefix:local".
	const std::size_t S = 10 * KB;
	const std::string onePair = Document().bits(0, 7)
		.bits(0x3F, 8).bits(0, 1).string(std::string(S, 'p')).bits(0, 1).string("urn:u").bits(0, 1).string(std::string(S, 'l'))
		// The end of the element before, then 0 0 1111 11 and prefix 2,
		// namespace 2 and local name 1 by index.
		.repeat(10000, [](DocumentBits& d) { d.bits(0xF0, 8).bits(0x3F, 8).bits(0x81, 8).bits(0x81, 8).bits(0x80, 8); })
		.bits(0xFF, 8).done();

	// 128 prefixes and 128 local names of 1 KB in the initial vocabulary, and
	// an element for each pair of them.
	const std::size_t K = 128;
	Document pairs;
	pairs.bits(0x20, 7).bits(0x0280, 16).bits(K - 1, 8)
		.repeat(K, [](DocumentBits& d) { d.bits(0, 1).string(std::string(KB, 'p')); }).bits(K - 1, 8)
		.repeat(K, [](DocumentBits& d) { d.bits(0, 1).string(std::string(KB, 'l')); });
	for (unsigned int prefix = 2; prefix < K + 2; ++prefix)
	{
		for (unsigned int local = 1; local <= K; ++local)
		{
			// The end of the element before, then 0 0 1111 10: a prefix and
			// no namespace.
			if (prefix > 2 || local > 1) pairs.bits(0xF0, 8);
			pairs.bits(0x3E, 8).bits(1, 1).integer(prefix).bits(1, 1).integer(local);
		}
	}
	const std::string manyPairs = pairs.bits(0xFF, 8).done();

	for (const std::string& document: {onePair, manyPairs})
	{
		SCOPED_TRACE(document.size());
		// Without the limit on amplification, which would stop them early.
		const Outcome outcome = parse(document, Reading::MEMORY, ~Ixor::UInt64(0));
		EXPECT_EQ("", outcome.error);
		EXPECT_LE(outcome.peak, MB + 16 * document.size());
	}
}


TEST(ResourceTest, WhatIsDeliveredByIndexIsLimited)
{
	// A 100 KB chunk added to the table and repeated by index; a 100 KB
	// element name repeated by index.
	const std::string chunk(100 * KB, 'x');
	const auto chunks = [&](std::size_t repeats)
	{
		return Document().root().bits(2, 2).bits(1, 2).bits(0, 2).length(chunk.size()).raw(chunk)
			.repeat(repeats, [](DocumentBits& d) { d.bits(0xA0, 8); }).bits(0xFF, 8).done();
	};
	const auto names = [&](std::size_t repeats)
	{
		return Document().bits(0, 7).bits(0x3C, 8).bits(0, 1).string(chunk).bits(0xF0, 8)
			.repeat(repeats, [](DocumentBits& d) { d.bits(0x00, 8).bits(0xF0, 8); }).bits(0x00, 8).bits(0xFF, 8).done();
	};
	struct { const char* what; std::string document; bool refused; } cases[] =
	{
		{"a chunk 10,000 times", chunks(10000), true},
		{"a chunk 60 times: below the threshold", chunks(60), false},
		{"a chunk 90 times: above the threshold, below the factor", chunks(90), false},
		{"a name 10,000 times", names(10000), true},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.what);
		const Outcome outcome = parse(c.document);
		if (c.refused) EXPECT_EQ(0u, outcome.error.find("Amplification limit exceeded")) << outcome.error;
		else EXPECT_EQ("", outcome.error);
		EXPECT_LT(outcome.seconds, SECONDS);
		EXPECT_LE(outcome.peak, MB + 2 * GROWTH * TEXT_PER_OCTET * c.document.size());
	}
}


TEST(ResourceTest, DepthIsLimitedByDefault)
{
	const std::string deep = Document().root().repeat(FastInfosetParser::DEFAULT_MAX_ELEMENT_DEPTH, [](DocumentBits& d) { d.bits(0, 8); }).done();
	EXPECT_EQ("Maximum element depth exceeded (at octet " + std::to_string(deep.size() - 1) + ")", parse(deep).error);
	EXPECT_EQ(10000u, FastInfosetParser().getMaxElementDepth());
}


TEST(ResourceTest, AttributeValuesByIndexAreReportedLikeCopies)
{
	struct Values: public NullHandler
	{
		std::vector<std::string> elements;

		void startElement(const std::string&, const std::string&, const std::string&, const Ixor::XML::Attributes& attributes) override
		{
			std::string values;
			for (int i = 0; i < attributes.getLength(); ++i) values += attributes.getValue(i) + "|";
			elements.push_back(values + attributes.getValue("", "a"));
		}
	};

	// Values by index refer to the vocabulary; the list's slots alternate
	// between referring and copying from one element to the next.
	const std::string document = Document().bits(0, 7)
		.bits(0x7C, 8).bits(0, 1).string("r")
		.bits(0x78, 8).bits(0, 1).string("a").bits(0x4, 4).string("v1")   // "v1", added to the table
		.bits(0, 1).integer(1).bits(1, 1).integer(1)                      // value 1 by index
		.bits(0, 1).integer(1).bits(0, 4).string("w")                     // "w", not added
		.bits(0xF, 4).bits(0, 4)
		.bits(0x40, 8)
		.bits(0, 1).integer(1).bits(0, 4).string("x")
		.bits(0, 1).integer(1).bits(1, 1).integer(1)
		.bits(0xFF, 8).bits(0xFF, 8).done();
	Values handler;
	FastInfosetParser parser;
	parser.setContentHandler(&handler);
	parser.parseMemoryNP(document.data(), document.size());
	const std::vector<std::string> expected = {"v1|v1|w|v1", "x|v1|x"};
	EXPECT_EQ(expected, handler.elements);
}


TEST(ResourceTest, AParserReadingDocumentAfterDocumentAllocatesNothingForThem)
{
	// The sample documents in turn, then in turn again: the second round
	// finds every table, list and string at the size it needs. The same with
	// a vocabulary given in advance that the documents build on.
	std::vector<std::string> documents;
	for (const std::string& path: TestSupport::xmlFilesIn(FASTINFOSET_TEST_DATA))
	{
		std::ifstream xml(path);
		std::ostringstream fi;
		Converter::convertToFIS(xml, fi, 0, 16);
		documents.push_back(fi.str());
	}
	ASSERT_LT(3u, documents.size());
	const std::string uri = "urn:given";
	DocumentVocabulary given(uri, DocumentVocabulary::VOC_MAP);
	bool found = false;
	given.index(DocumentVocabulary::CONTENT_CHARACTER_CHUNK, "given", found);
	// Documents that all build on the vocabulary given in advance.
	std::vector<std::string> againstGiven;
	for (const char* text: {"added", "other"})
	{
		std::ostringstream against;
		{
			FastInfosetWriter writer(against, false, given);
			writer.setExternalVocabulary(uri, given);
			writer.startDocument();
			writer.startElement("", "r", "r");
			writer.characters(text);
			writer.endElement("", "r", "r");
			writer.endDocument();
		}
		againstGiven.push_back(against.str());
	}

	FastInfosetParser fresh;
	FastInfosetParser withVocabulary(given);
	for (FastInfosetParser* pParser: {&fresh, &withVocabulary})
	{
		NullHandler handler;
		handler.attachTo(*pParser);
		const std::vector<std::string>& inTurn = pParser == &fresh ? documents : againstGiven;
		for (int round = 0; round < 2; ++round)
		{
			for (const std::string& document: inTurn)
			{
				Measure measure;
				pParser->parseMemoryNP(document.data(), document.size());
				if (round == 1)
				{
					EXPECT_EQ(0u, allocations.count) << "document " << &document - &inTurn[0];
				}
			}
		}
	}
}


TEST(ResourceTest, AWriterRestartedDocumentAfterDocumentAllocatesNothingForThem)
{
	// The sample documents (namespaces, comments and a document type
	// declaration before the root, processing instructions) read into one
	// writer restarted for each: in the second round every table, scope and
	// deferred event finds the memory it needs.
	class FixedBuffer: public std::streambuf
	{
	public:
		explicit FixedBuffer(std::size_t size): _octets(size)
		{
			rewind();
		}

		void rewind()
		{
			setp(_octets.data(), _octets.data() + _octets.size());
		}

	private:
		std::vector<char> _octets;
	};

	std::vector<std::string> documents;
	for (const std::string& path: TestSupport::xmlFilesIn(FASTINFOSET_TEST_DATA))
	{
		std::ifstream xml(path);
		std::ostringstream fi;
		Converter::convertToFIS(xml, fi);
		documents.push_back(fi.str());
	}
	FixedBuffer buffer(1 << 20);
	std::ostream out(&buffer);
	FastInfosetWriter writer(out);
	FastInfosetParser parser;
	parser.setContentHandler(&writer);
	parser.setProperty(Ixor::XML::XMLReader::PROPERTY_LEXICAL_HANDLER, static_cast<Ixor::XML::LexicalHandler*>(&writer));
	for (int round = 0; round < 2; ++round)
	{
		for (const std::string& document: documents)
		{
			buffer.rewind();
			Measure measure;
			writer.reset(out);
			parser.parseMemoryNP(document.data(), document.size());
			if (round == 1)
			{
				EXPECT_EQ(0u, allocations.count) << "document " << &document - &documents[0];
			}
		}
	}
}
