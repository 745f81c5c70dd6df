#include "Ixor/FastInfoset/BitStreamReader.h"
#include "Ixor/FastInfoset/Decoder.h"
#include "Ixor/FastInfoset/DocumentRestrictedAlphabet.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "Ixor/FastInfoset/FISException.h"
#include "Ixor/FastInfoset/HashVocabulary.h"
#include "Ixor/FastInfoset/MapVocabulary.h"
#include "Ixor/FastInfoset/StringDecoder.h"
#include "Ixor/FastInfoset/VectorVocabulary.h"
#include "Ixor/FastInfoset/VerbTable.h"
#include "Reading.h"
#include "TestSupport.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>


using namespace Ixor::FastInfoset;
using namespace TestSupport;
using testing::HasSubstr;


namespace {


const std::string XML_NAMESPACE("http://www.w3.org/XML/1998/namespace");
const DocumentVocabulary::VocabularyImpl KINDS[] = {DocumentVocabulary::VOC_HASH, DocumentVocabulary::VOC_MAP, DocumentVocabulary::VOC_VECTOR};


struct TableKind
{
	const char* name;
	std::function<Vocabulary<std::string>*()> make;
	bool appendsAlways;
	bool rangeByAssertion;  // value() out of range: assertion, or std::out_of_range
};


const TableKind TABLE_KINDS[] =
{
	{"hash",   [] { return new HashVocabulary<std::string>(251); },   false, true},
	{"map",    [] { return new MapVocabulary<std::string>(251); },    false, true},
	{"vector", [] { return new VectorVocabulary<std::string>(251); }, true,  false},
};


template <class F>
std::string assertionOf(F f)
	/// The message of the assertion that f raises.
{
	return messageOf<Ixor::AssertionViolationException>(f);
}


template <class F>
std::string outOfRangeOf(F f)
{
	try
	{
		f();
	}
	catch (const std::out_of_range& exc)
	{
		return exc.what();
	}
	return "no exception";
}


std::vector<std::string> entries(const Vocabulary<std::string>& table)
{
	std::vector<std::string> result;
	for (std::size_t i = 0; i < table.size(); ++i) result.push_back(table.value(static_cast<unsigned int>(i)));
	return result;
}


//
// Initial vocabularies as bit strings. A document header octet starts with
// the padding bit that Decoder::documentPreHeader skips.
//
std::string bitsOf(unsigned long value, int count)
{
	std::string bits;
	for (int i = count - 1; i >= 0; --i) bits += ((value >> i) & 1) ? '1' : '0';
	return bits + ' ';
}


std::string octetBits(const std::string& octets)
{
	std::string bits;
	for (unsigned char c: octets) bits += bitsOf(c, 8);
	return bits;
}


std::string initialVocabulary(const char* flags)
	/// The header octet with only the initial-vocabulary bit set, the three
	/// padding bits and the 13 given flags.
{
	return std::string("0 0100000 000 ") + flags + ' ';
}


std::string identifying(const std::string& s)
	/// One padding bit and a string of up to 64 octets at p = 1.
{
	return "0 " + bitsOf(s.size() - 1, 7) + octetBits(s);
}


std::string utf8Item(const std::string& s)
	/// An encoded character string item: padding '00', UTF-8, up to 8 octets.
{
	return "00 00 " + bitsOf(s.size() - 1, 4) + octetBits(s);
}


class InitialVocabularyTest: public testing::TestWithParam<Reading>
	/// Every test reads its vocabularies in each of the ways of reading.
{
protected:
	void decodeHeader(const std::string& bits, DocumentVocabulary& vocabulary)
	{
		Input input(fromBits(bits), GetParam());
		input.reader().skip(1);
		Decoder::documentHeader(input.reader(), vocabulary, 0);
	}
};


INSTANTIATE_TEST_SUITE_P(Readings, InitialVocabularyTest, testing::ValuesIn(READINGS), testing::PrintToStringParamName());


} // namespace


//
// Tables
//
TEST(VocabularyTest, TablesFollowTheIndexConventionsOfTheirKind)
{
	for (const TableKind& kind: TABLE_KINDS)
	{
		SCOPED_TRACE(kind.name);
		std::unique_ptr<Vocabulary<std::string>> pTable(kind.make());
		bool found = true;
		EXPECT_EQ(1u, pTable->size());
		EXPECT_EQ(0u, pTable->exists("", found));
		EXPECT_TRUE(found);
		EXPECT_EQ(Vocabulary<std::string>::NOT_FOUND, pTable->exists("a", found));
		EXPECT_FALSE(found);

		EXPECT_EQ(1u, pTable->index("a", found));
		EXPECT_FALSE(found);
		EXPECT_EQ(2u, pTable->index("b", found));

		const unsigned int again = pTable->index("a", found);
		EXPECT_EQ(kind.appendsAlways ? 3u : 1u, again);
		EXPECT_EQ(!kind.appendsAlways, found);
		EXPECT_EQ(kind.appendsAlways ? 4u : 3u, pTable->size());
		EXPECT_EQ(1u, pTable->exists("a", found));   // the first one

		const unsigned int size = static_cast<unsigned int>(pTable->size());
		for (unsigned int idx: {size, 0xFFFFFFFFu})
		{
			if (kind.rangeByAssertion)
				EXPECT_THAT(assertionOf([&] { pTable->value(idx); }), HasSubstr("this->_index.size() > idx"));
			else
				EXPECT_EQ("index out of range", outOfRangeOf([&] { pTable->value(idx); }));
		}
	}
}


TEST(VocabularyTest, DifferencesListTheMissingEntriesFromIndexZero)
{
	for (const TableKind& kind: TABLE_KINDS)
	{
		SCOPED_TRACE(kind.name);
		std::unique_ptr<Vocabulary<std::string>> pFresh(kind.make());
		std::unique_ptr<Vocabulary<std::string>> pTable(kind.make());
		bool found;
		for (const char* s: {"x", "y", "z"}) pTable->index(s, found);

		std::unique_ptr<Vocabulary<std::string>> pCopy(pTable->clone());
		pCopy->index("only in the copy", found);
		EXPECT_EQ(4u, pTable->size());

		std::unique_ptr<Vocabulary<std::string>> pDiff(pTable->subtract(*pFresh));
		EXPECT_EQ((std::vector<std::string>{"x", "y", "z"}), entries(*pDiff));
		std::unique_ptr<Vocabulary<std::string>> pNone(pTable->subtract(*pTable));
		EXPECT_EQ(0u, pNone->size());
		EXPECT_TRUE(pNone->empty());
		std::unique_ptr<Vocabulary<std::string>> pExtra(pCopy->subtract(*pTable));
		EXPECT_EQ(std::vector<std::string>{"only in the copy"}, entries(*pExtra));

		// A difference is a table of its own that takes and finds values.
		EXPECT_EQ(3u, pDiff->index("w", found));
		EXPECT_EQ(1u, pDiff->exists("y", found));
		EXPECT_TRUE(found);
	}
}


TEST(VocabularyTest, HashTablesRefuseTheValueBeyondTheirCapacity)
{
	HashVocabulary<std::string> table(19);
	bool found;
	for (int i = 1; i < 19; ++i) EXPECT_EQ(static_cast<unsigned int>(i), table.index("v" + std::to_string(i), found));
	EXPECT_EQ("Vocabulary hash table full", messageOf<Ixor::PoolOverflowException>([&] { table.index("one more", found); }));
	EXPECT_EQ(19u, table.size());
	EXPECT_EQ(Vocabulary<std::string>::NOT_FOUND, table.exists("one more", found));
	for (int i = 1; i < 19; ++i)
	{
		EXPECT_EQ(static_cast<unsigned int>(i), table.index("v" + std::to_string(i), found));
		EXPECT_TRUE(found);
	}
	EXPECT_EQ(0u, table.exists("", found));

	// Without slots a table can hold nothing.
	HashVocabulary<std::string> bare((DontInitialize()));
	EXPECT_EQ("Vocabulary hash table full", messageOf<Ixor::PoolOverflowException>([&] { bare.index("a", found); }));
	EXPECT_TRUE(bare.empty());
}


TEST(VocabularyTest, IndexWithinAddsOnlyWhileThereIsRoom)
{
	// A writer asks for an index that a reader can follow: the table takes
	// a new value only up to the given index and its own capacity, and
	// otherwise says so without throwing and without changing.
	HashVocabulary<std::string> hash(19);
	MapVocabulary<std::string> map(19);
	struct Case { const char* kind; std::function<unsigned int(const std::string&, std::size_t, bool&)> indexWithin; std::function<std::size_t()> size; };
	const Case cases[] =
	{
		{"hash", [&](const std::string& v, std::size_t max, bool& found) { return hash.indexWithin(v.data(), v.size(), max, found); }, [&] { return hash.size(); }},
		{"map",  [&](const std::string& v, std::size_t max, bool& found) { return map.indexWithin(v.data(), v.size(), max, found); },  [&] { return map.size(); }},
	};
	const unsigned int NOT_FOUND = Vocabulary<std::string>::NOT_FOUND;
	for (const Case& c: cases)
	{
		SCOPED_TRACE(c.kind);
		bool found = true;
		EXPECT_EQ(1u, c.indexWithin("a", 1, found));
		EXPECT_FALSE(found);
		EXPECT_EQ(NOT_FOUND, c.indexWithin("b", 1, found));   // its index would be 2
		EXPECT_FALSE(found);
		EXPECT_EQ(1u, c.indexWithin("a", 1, found));          // present values are still found
		EXPECT_TRUE(found);
		EXPECT_EQ(2u, c.size());
		for (int i = 2; i < 19; ++i) EXPECT_EQ(static_cast<unsigned int>(i), c.indexWithin("v" + std::to_string(i), 100, found));
		// 19 values fill the hash table; the map grows.
		const unsigned int beyond = c.indexWithin("one more", 100, found);
		EXPECT_EQ(std::string(c.kind) == "hash" ? NOT_FOUND : 19u, beyond);
		EXPECT_EQ(7u, c.indexWithin("v7", 100, found));
		EXPECT_TRUE(found);
	}
	bool found = false;
	EXPECT_EQ(19u, hash.size());
	EXPECT_EQ(NOT_FOUND, hash.exists("one more", found));

	HashVocabulary<QualifiedNameEntry> names(3);
	EXPECT_EQ(1u, names.indexWithin(QualifiedNameEntry(1, 2, 3), 100, found));
	EXPECT_EQ(2u, names.indexWithin(QualifiedNameEntry(3, 2, 1), 100, found));
	EXPECT_EQ(Vocabulary<QualifiedNameEntry>::NOT_FOUND, names.indexWithin(QualifiedNameEntry(2, 1, 3), 100, found));
	EXPECT_EQ(2u, names.indexWithin(QualifiedNameEntry(3, 2, 1), 0, found));
	EXPECT_TRUE(found);
}


TEST(VocabularyTest, NameTablesTellPermutedIdsApart)
{
	// The name hash is symmetric in the three ids; probing must compare.
	HashVocabulary<QualifiedNameEntry> table(7);
	bool found;
	EXPECT_EQ(1u, table.index(QualifiedNameEntry(1, 2, 3), found));
	EXPECT_EQ(2u, table.index(QualifiedNameEntry(3, 2, 1), found));
	EXPECT_EQ(3u, table.index(QualifiedNameEntry(2, 1, 3), found));
	EXPECT_EQ(2u, table.exists(QualifiedNameEntry(3, 2, 1), found));
	EXPECT_EQ(QualifiedNameEntry(2, 1, 3), table.value(3));
}


TEST(VocabularyTest, EntriesStayInPlaceAcrossChunks)
{
	VerbTable<std::string> table;
	table.push_back("first");
	table.push_back("second");
	const std::string& second = table[1];
	for (int i = 2; i < 2000; ++i) table.push_back(std::to_string(i));
	EXPECT_EQ(&second, &table[1]);
	EXPECT_EQ("second", second);
	// The first chunk holds 0 to 255, the second 256 to 767, the third 768 to 1791.
	for (std::size_t i: {255u, 256u, 767u, 768u, 1791u, 1792u, 1999u}) EXPECT_EQ(std::to_string(i), table.at(i));
	EXPECT_EQ("index out of range", outOfRangeOf([&] { table.at(2000); }));

	// A copy is deep and keeps its entries in place while it grows.
	VerbTable<std::string> copy(table);
	copy[300] = "changed";
	EXPECT_EQ("300", table[300]);
	const std::string& kept = copy[1999];
	for (int i = 0; i < 3000; ++i) copy.push_back("more");
	EXPECT_EQ(&kept, &copy[1999]);
	EXPECT_EQ(5000u, copy.size());
	EXPECT_EQ(2000u, table.size());
}


TEST(VocabularyTest, TruncatedTablesAreAsTheyWereAtThatSize)
{
	// Enough entries for the map tables to grow several times: what the
	// tables keep is found where it was, what they forget is gone, and
	// adding it again gives the indexes it had.
	auto check = [](auto& table, auto entry)
	{
		std::vector<unsigned int> first;
		bool found = false;
		for (int i = 0; i < 1000; ++i) first.push_back(table.indexWithin(entry(i), 1u << 20, found));
		// One entry at a time, so that every entry is once the newest one
		// kept, next to those just forgotten.
		const std::size_t kept = 301;   // the placeholder and 300 entries
		for (std::size_t size = table.size() - 1; size >= kept; --size)
		{
			table.truncate(size);
			EXPECT_EQ(size, table.size());
			EXPECT_EQ(table.NOT_FOUND, table.find(entry(static_cast<int>(size - 1))));
			for (std::size_t i = 0; i + 1 < size; ++i) ASSERT_EQ(first[i], table.find(entry(static_cast<int>(i)))) << i << " of " << size;
		}
		found = true;
		for (int i = 999; i >= 300; --i) EXPECT_EQ(kept + 999 - i, table.indexWithin(entry(i), 1u << 20, found));
		EXPECT_FALSE(found);
		for (int i = 0; i < 1000; ++i) EXPECT_EQ(i < 300 ? first[i] : kept + 999 - i, table.find(entry(i))) << i;
		table.truncate(0);
		EXPECT_TRUE(table.empty());
		EXPECT_EQ(table.NOT_FOUND, table.find(entry(0)));
	};
	auto text = [](int i) { return "entry " + std::to_string(i); };
	auto name = [](int i) { return QualifiedNameEntry(i % 3, i % 7, i + 1); };
	MapVocabulary<std::string> map(1);
	check(map, text);
	HashVocabulary<std::string> hash(1200);
	check(hash, text);
	MapVocabulary<QualifiedNameEntry> names(1);
	check(names, name);
	HashVocabulary<QualifiedNameEntry> hashedNames(1200);
	check(hashedNames, name);
}


TEST(VocabularyTest, TruncatedEntriesLendTheirPlacesToTheNext)
{
	VerbTable<std::string> table;
	for (int i = 0; i < 600; ++i) table.push_back("a string longer than a short one " + std::to_string(i));
	const std::string* pPlace = &table[400];
	const std::size_t capacity = table[400].capacity();
	table.truncate(300);
	EXPECT_EQ(300u, table.size());
	EXPECT_EQ("index out of range", outOfRangeOf([&] { table.at(300); }));
	VerbTable<std::string> copy(table);
	EXPECT_EQ(300u, copy.size());
	for (int i = 300; i < 700; ++i) table.push_back(std::to_string(i));
	EXPECT_EQ(pPlace, &table[400]);
	EXPECT_EQ("400", table[400]);
	EXPECT_EQ(capacity, table[400].capacity());
	EXPECT_EQ("699", table.at(699));
	copy.push_back("next");
	EXPECT_EQ("next", copy.at(300));
}


//
// Document vocabulary
//
TEST(VocabularyTest, FreshDocumentVocabulariesOfEachKind)
{
	for (DocumentVocabulary::VocabularyImpl impl: KINDS)
	{
		SCOPED_TRACE(impl);
		DocumentVocabulary vocabulary(impl);
		EXPECT_EQ("xml", vocabulary.value(DocumentVocabulary::PREFIX, 1));
		EXPECT_EQ(XML_NAMESPACE, vocabulary.value(DocumentVocabulary::NAMESPACE_NAME, 1));
		for (int id = DocumentVocabulary::LOCAL_NAME; id <= DocumentVocabulary::CONTENT_CHARACTER_CHUNK; ++id)
			EXPECT_EQ(1u, vocabulary.vocabulary(static_cast<DocumentVocabulary::ID>(id))->size());
		EXPECT_EQ(1u, vocabulary.elementVocabulary()->size());
		EXPECT_EQ(1u, vocabulary.attributeVocabulary()->size());

		bool found;
		const bool vector = impl == DocumentVocabulary::VOC_VECTOR;
		EXPECT_EQ(vector ? 2u : 1u, vocabulary.index(DocumentVocabulary::PREFIX, "xml", found));
		EXPECT_EQ(!vector, found);

		// Indexes from documents go straight to value(): out of range they raise.
		EXPECT_ANY_THROW(vocabulary.value(DocumentVocabulary::LOCAL_NAME, 1));
	}
}


TEST(VocabularyTest, DocumentVocabularyRefusesBadIdentifiersAndMissingTables)
{
	DocumentVocabulary vocabulary;
	const std::string range = "voc > DocumentVocabulary::ENCODING_ALGORITHM && voc < DocumentVocabulary::ELEMENT_NAME";
	EXPECT_THAT(assertionOf([&] { vocabulary.vocabulary(DocumentVocabulary::ENCODING_ALGORITHM); }), HasSubstr(range));
	EXPECT_THAT(assertionOf([&] { vocabulary.vocabulary(DocumentVocabulary::ELEMENT_NAME); }), HasSubstr(range));
	bool found;
	EXPECT_THAT(assertionOf([&] { vocabulary.index(DocumentVocabulary::RESTRICTED_ALPHABET, "a", found); }),
		HasSubstr("vocabulary > DocumentVocabulary::ENCODING_ALGORITHM && vocabulary < DocumentVocabulary::ELEMENT_NAME"));

	DocumentVocabulary bare((DontInitialize()));
	EXPECT_THAT(assertionOf([&] { bare.elementVocabulary(); }), HasSubstr("_pElementVocabulary"));
	EXPECT_THAT(assertionOf([&] { bare.attributeVocabulary(); }), HasSubstr("_pAttributeVocabulary"));
	EXPECT_THROW(bare.value(DocumentVocabulary::PREFIX, 0), Ixor::AssertionViolationException);

	EXPECT_THROW(DocumentVocabulary(static_cast<DocumentVocabulary::VocabularyImpl>(3)), Ixor::InvalidArgumentException);
}


TEST(VocabularyTest, CopiesAndAssignmentsAreIndependent)
{
	for (DocumentVocabulary::VocabularyImpl impl: KINDS)
	{
		SCOPED_TRACE(impl);
		DocumentVocabulary source("urn:source", impl);
		bool found;
		source.index(DocumentVocabulary::LOCAL_NAME, "a", found);
		source.elementVocabulary()->index(QualifiedNameEntry(0, 0, 1), found);
		source.restrictedAlphabets().add("ab");

		DocumentVocabulary copy(source);
		DocumentVocabulary assigned(DocumentVocabulary::VOC_MAP);
		assigned = source;
		const DocumentVocabulary& itself = assigned;
		assigned = itself;
		source.index(DocumentVocabulary::LOCAL_NAME, "b", found);
		source.elementVocabulary()->index(QualifiedNameEntry(0, 0, 2), found);

		for (const DocumentVocabulary* pVocabulary: {&copy, &assigned})
		{
			EXPECT_EQ(impl, pVocabulary->impl());
			EXPECT_EQ("urn:source", pVocabulary->getURI());
			EXPECT_EQ((std::vector<std::string>{"", "a"}), entries(*pVocabulary->vocabulary(DocumentVocabulary::LOCAL_NAME)));
			EXPECT_EQ(2u, pVocabulary->elementVocabulary()->size());
			EXPECT_EQ(16u, pVocabulary->restrictedAlphabets().alphabets().size());
		}
		EXPECT_EQ(3u, source.vocabulary(DocumentVocabulary::LOCAL_NAME)->size());
	}
}


TEST(VocabularyTest, ResetEmptiesTheTablesButKeepsAlphabetsAndURI)
{
	DocumentVocabulary vocabulary("urn:v", DocumentVocabulary::VOC_MAP);
	bool found;
	vocabulary.index(DocumentVocabulary::PREFIX, "p", found);
	vocabulary.attributeVocabulary()->index(QualifiedNameEntry(2, 0, 1), found);
	vocabulary.restrictedAlphabets().add("ab");
	vocabulary.reset();
	EXPECT_EQ((std::vector<std::string>{"", "xml"}), entries(*vocabulary.vocabulary(DocumentVocabulary::PREFIX)));
	EXPECT_EQ(1u, vocabulary.attributeVocabulary()->size());
	EXPECT_EQ("ab", vocabulary.restrictedAlphabets().alphabet(16).characters());
	EXPECT_EQ("urn:v", vocabulary.getURI());
	EXPECT_EQ(DocumentVocabulary::VOC_MAP, vocabulary.impl());
}


TEST(VocabularyTest, CutBackTablesReuseTheirEntriesAndCopyOnlyWhatTheyHold)
{
	VerbTable<std::string> table;
	for (int i = 0; i < 300; ++i) table.push_back(std::string(i == 299 ? 1000 : 20, 'a'));
	const std::string& kept = table[1];
	const std::string& spare = table[2];
	table.truncate(2);
	EXPECT_EQ(2u, table.size());
	EXPECT_EQ("index out of range", outOfRangeOf([&] { table.at(2); }));
	table.push_back("b");
	// The entry below stays; the new one is the spare object, which kept its
	// storage; a long one gave its storage back.
	EXPECT_EQ(&kept, &table[1]);
	EXPECT_EQ(&spare, &table[2]);
	EXPECT_LE(20u, spare.capacity());
	table.truncate(0);
	EXPECT_TRUE(table.empty());
	table.push_back("c");
	table.truncate(5);
	EXPECT_EQ(1u, VerbTable<std::string>(table).size());

	// A vector table keeps the storage of short strings only.
	VectorVocabulary<std::string> strings(0);
	bool found;
	for (int i = 0; i < 300; ++i) strings.index(std::string(i == 299 ? 1000 : 20, 'a'), found);
	strings.truncate(1);
	for (int i = 0; i < 300; ++i) strings.index("c", found);
	EXPECT_GT(1000u, strings.value(299).capacity());
	EXPECT_EQ(301u, strings.size());
}


TEST(VocabularyTest, AVocabularyIsCutBackToItsBaseOnlyWithVectorTables)
{
	bool found;
	DocumentVocabulary base("urn:b", DocumentVocabulary::VOC_VECTOR);
	base.index(DocumentVocabulary::LOCAL_NAME, "given", found);
	DocumentVocabulary vocabulary(base);
	vocabulary.index(DocumentVocabulary::LOCAL_NAME, "added", found);
	vocabulary.elementVocabulary()->index(QualifiedNameEntry(0, 0, 2), found);
	vocabulary.restrictedAlphabets().add("ab");
	const std::string& given = vocabulary.value(DocumentVocabulary::LOCAL_NAME, 1);
	EXPECT_TRUE(vocabulary.truncate(base));
	EXPECT_EQ((std::vector<std::string>{"", "given"}), entries(*vocabulary.vocabulary(DocumentVocabulary::LOCAL_NAME)));
	EXPECT_EQ(&given, &vocabulary.value(DocumentVocabulary::LOCAL_NAME, 1));
	EXPECT_EQ(1u, vocabulary.elementVocabulary()->size());
	EXPECT_EQ(15u, vocabulary.restrictedAlphabets().alphabets().size());

	// A reset cuts vector tables back to a fresh vocabulary's entries.
	vocabulary.reset();
	EXPECT_EQ((std::vector<std::string>{""}), entries(*vocabulary.vocabulary(DocumentVocabulary::LOCAL_NAME)));
	EXPECT_EQ((std::vector<std::string>{"", "xml"}), entries(*vocabulary.vocabulary(DocumentVocabulary::PREFIX)));
	// Smaller than the base, or of another kind: nothing changes.
	EXPECT_FALSE(vocabulary.truncate(base));
	DocumentVocabulary hashed("urn:b", DocumentVocabulary::VOC_HASH);
	hashed.index(DocumentVocabulary::LOCAL_NAME, "given", found);
	hashed.index(DocumentVocabulary::LOCAL_NAME, "added", found);
	EXPECT_FALSE(hashed.truncate(base));
	EXPECT_EQ(3u, hashed.vocabulary(DocumentVocabulary::LOCAL_NAME)->size());
}


TEST(VocabularyTest, DifferenceOfDocumentVocabularies)
{
	for (DocumentVocabulary::VocabularyImpl impl: KINDS)
	{
		SCOPED_TRACE(impl);
		const DocumentVocabulary fresh(impl);
		const DocumentVocabulary none = fresh - fresh;
		for (int id = DocumentVocabulary::PREFIX; id <= DocumentVocabulary::CONTENT_CHARACTER_CHUNK; ++id)
			EXPECT_EQ(0u, none.vocabulary(static_cast<DocumentVocabulary::ID>(id))->size());
		EXPECT_EQ(0u, none.elementVocabulary()->size());
		EXPECT_EQ(0u, none.restrictedAlphabets().alphabets().size());

		DocumentVocabulary vocabulary(impl);
		bool found;
		vocabulary.index(DocumentVocabulary::LOCAL_NAME, "a", found);
		vocabulary.elementVocabulary()->index(QualifiedNameEntry(0, 0, 1), found);
		vocabulary.restrictedAlphabets().add("ab");
		DocumentVocabulary diff = vocabulary - DocumentVocabulary(DocumentVocabulary::VOC_HASH);
		EXPECT_EQ(impl, diff.impl());
		EXPECT_EQ(std::vector<std::string>{"a"}, entries(*diff.vocabulary(DocumentVocabulary::LOCAL_NAME)));
		EXPECT_EQ(QualifiedNameEntry(0, 0, 1), diff.elementVocabulary()->value(0));
		EXPECT_EQ(0u, diff.vocabulary(DocumentVocabulary::PREFIX)->size());
		ASSERT_EQ(1u, diff.restrictedAlphabets().alphabets().size());
		EXPECT_EQ("ab", diff.restrictedAlphabets().alphabets()[0].characters());
		EXPECT_EQ("", diff.getURI());
		// The difference takes entries like any vocabulary.
		EXPECT_EQ(1u, diff.index(DocumentVocabulary::LOCAL_NAME, "b", found));
	}
	const DocumentVocabulary fresh;
	EXPECT_THAT(assertionOf([&] { fresh - DocumentVocabulary(DontInitialize()); }), HasSubstr("itDoc != doc._vocabularies.end()"));
}


//
// Restricted alphabets and string decoding
//
TEST(VocabularyTest, AlphabetCodesHaveTheFewestBitsThatLeaveTheAllOnesCodeFree)
{
	struct { const char* characters; unsigned int bitSize; int endCode; } cases[] =
	{
		{"a",                1, 1},
		{"ab",               2, 3},
		{"abc",              2, 3},
		{"abcdefg",          3, 7},
		{"abcdefgh",         4, 15},
		{"0123456789-+.E ",  4, 15},
		{"0123456789abcdef", 5, 31},
		{"\xce\xb1\xce\xb2\xce\xb3", 2, 3},   // three characters, six octets
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.characters);
		RestrictedAlphabet alphabet(c.characters);
		EXPECT_EQ(c.bitSize, alphabet.bitSize());
		EXPECT_TRUE(alphabet.isEndOfString(c.endCode));
		EXPECT_FALSE(alphabet.isEndOfString(c.endCode - 1));
	}
	EXPECT_FALSE(RestrictedAlphabet().isEndOfString(0));
	EXPECT_THAT(assertionOf([] { RestrictedAlphabet(""); }), HasSubstr("!utf8Characters.empty()"));
	EXPECT_THAT(assertionOf([] { RestrictedAlphabet("ab").indexToChar(2); }), HasSubstr("code"));
}


TEST(VocabularyTest, DocumentAlphabetsByIndex)
{
	DocumentRestrictedAlphabet alphabets;
	EXPECT_EQ(15u, alphabets.alphabets().size());
	EXPECT_EQ("0123456789-+.E ", alphabets.alphabet(1).characters());
	EXPECT_EQ("0123456789-:TZ ", alphabets.alphabet(2).characters());
	EXPECT_EQ(0u, alphabets.alphabet(15).bitSize());
	const std::string range = "vocabulary > 0 && vocabulary <= _alphabets.size()";
	EXPECT_THAT(assertionOf([&] { alphabets.alphabet(0); }), HasSubstr(range));
	EXPECT_THAT(assertionOf([&] { alphabets.alphabet(16); }), HasSubstr(range));

	EXPECT_EQ(15u, alphabets.add("abc"));
	EXPECT_EQ(2u, alphabets.alphabet(16).bitSize());
	EXPECT_EQ(0u, (DocumentRestrictedAlphabet() - DocumentRestrictedAlphabet()).alphabets().size());
	EXPECT_EQ("abc", (alphabets - DocumentRestrictedAlphabet()).alphabets().at(0).characters());
	EXPECT_THAT(assertionOf([&] { DocumentRestrictedAlphabet() - alphabets; }), HasSubstr("other.alphabets().size() <= _alphabets.size()"));

	for (unsigned int index: {0u, 3u, 15u, 17u, 0xFFFFFFFFu}) EXPECT_FALSE(alphabets.isDefined(index)) << index;
	for (unsigned int index: {1u, 2u, 16u}) EXPECT_TRUE(alphabets.isDefined(index)) << index;
}


TEST(VocabularyTest, BuiltInAlphabetsReadFourBitCodes)
{
	// Strings as any writer of the format sends them: one character per
	// four bits, an odd count filled up with 1111.
	struct { unsigned int index; const char* hex; const char* text; } cases[] =
	{
		{1, "3c 14 da 5f",                   "3.14E-5"},                // 3 . 1 4 E - 5 | fill
		{1, "a1 2e b3 c5",                   "-12 +3.5"},
		{1, "0f",                            "0"},
		{2, "20 24 a0 6a 11 c1 2b 30 b0 0d", "2024-06-11T12:30:00Z"},   // - a, : b, T c, Z d
		{2, "1e 2f",                         "1 2"},
	};
	const DocumentRestrictedAlphabet alphabets;
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.text);
		std::string text = "old";
		StringDecoder::decodeAlphabet(fromHex(c.hex), alphabets.alphabet(c.index), text);
		EXPECT_EQ(c.text, text);
	}
}


TEST(VocabularyTest, AlphabetStringsEndAtTheFillOfTheirLastOctet)
{
	struct { const char* characters; const char* hex; const char* text; } cases[] =
	{
		{"a",                "1f",     "aaa"},                  // 0 0 0|1 1111
		{"a",                "00",     "aaaaaaaa"},
		{"ab",               "47",     "bab"},                  // 01 00 01|11
		{"abc",              "1b",     "abc"},                  // 00 01 10|11
		{"abc",              "89",     "cacb"},                 // no fill
		{"abcdefg",          "d4 7f",  "gfa"},                  // 110 101 000|1 1111 11
		{"abcdefg",          "d7",     "gf"},                   // 110 101|11: fill shorter than a code
		{"abcdefg",          "05 39 70", "abcdefga"},           // eight codes, no fill
		{"0123456789abcdef", "78 3f",  "f0"},                   // 01111 00000|11 1111
		{"0123456789abcdef", "0f",     "1"},                    // 00001|111
		{"\xce\xb1\xce\xb2\xce\xb3", "1b", "\xce\xb1\xce\xb2\xce\xb3"},
		{"a\xff" "b",        "1b",     "a?b"},                  // an invalid sequence stands for "?"
		// Codes between the last character and the all-ones code, and an
		// all-ones code before the last octet, come only from bad input.
		{"ab",               "bf",     "Restricted alphabet code names no character"},     // 10|11 1111
		{"0123456789abcdef", "80",     "Restricted alphabet code names no character"},     // 10000|000
		{"abc",              "1b 00",  "Restricted alphabet string ends before its last octet"},
		{"0123456789-+.E ",  "ff",     "Restricted alphabet string ends before its last octet"},
		{"abcdefg",          "ff ff",  "Restricted alphabet string ends before its last octet"},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(testing::Message() << c.characters << " " << c.hex);
		std::string text = "old";
		const std::string message = messageOf<FISEncodingException>([&]
		{
			StringDecoder::decodeAlphabet(fromHex(c.hex), RestrictedAlphabet(c.characters), text);
		});
		if (message == "no exception") EXPECT_EQ(c.text, text);
		else EXPECT_EQ(c.text, message);
	}
	std::string text;
	EXPECT_THAT(messageOf<FISEncodingException>([&] { StringDecoder::decodeAlphabet(fromHex("00"), RestrictedAlphabet(), text); }),
		HasSubstr("no characters"));
}


TEST(VocabularyTest, UTF16IsBigEndianAndInvalidSequencesBecomeQuestionMarks)
{
	struct { const char* hex; const char* text; } cases[] =
	{
		{"00610062", "ab"},
		{"6100",     "\xe6\x84\x80"},       // U+6100, not "a"
		{"00e9",     "\xc3\xa9"},
		{"d83dde00", "\xf0\x9f\x98\x80"},   // a surrogate pair: U+1F600
		{"de000061", "?a"},                 // a low surrogate alone
		{"d83d0061", "?"},                  // the framework takes a lone high surrogate and its successor as one sequence
		{"0061d83d", "a?"},                 // a high surrogate at the end
		{"006100",   "a?"},                 // an odd octet
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.hex);
		std::string text = "old";
		StringDecoder::decodeUTF16(fromHex(c.hex), text);
		EXPECT_EQ(c.text, text);
	}
}


//
// Initial vocabulary
//
TEST_P(InitialVocabularyTest, TablesAreFilledInStreamOrder)
{
	const std::string localNameA = initialVocabulary("00000 10000000") + bitsOf(0, 8) + identifying("a");
	DocumentVocabulary vocabulary;
	bool found;
	vocabulary.index(DocumentVocabulary::LOCAL_NAME, "from an earlier document", found);
	decodeHeader(localNameA, vocabulary);
	EXPECT_EQ((std::vector<std::string>{"", "a"}), entries(*vocabulary.vocabulary(DocumentVocabulary::LOCAL_NAME)));

	decodeHeader(initialVocabulary("00010 00000000") + bitsOf(0, 8) + identifying("p"), vocabulary);
	EXPECT_EQ((std::vector<std::string>{"", "xml", "p"}), entries(*vocabulary.vocabulary(DocumentVocabulary::PREFIX)));
	EXPECT_EQ(1u, vocabulary.vocabulary(DocumentVocabulary::LOCAL_NAME)->size());

	// No initial vocabulary: a reset.
	decodeHeader("0 0000000", vocabulary);
	EXPECT_EQ(2u, vocabulary.vocabulary(DocumentVocabulary::PREFIX)->size());

	// Alphabet "ab" becomes 16; algorithm URIs are dropped; attribute values,
	// content chunks and other strings come in that order, the second one
	// in the numeric alphabet behind the extra integer, the third in UTF-16.
	decodeHeader(initialVocabulary("01100 00011110") +
		bitsOf(0, 8) + identifying("ab") +
		bitsOf(0, 8) + identifying("urn:algorithm") +
		bitsOf(0, 8) + utf8Item("v") +
		bitsOf(0, 8) + "00 10 00000111 00000000 0000 00000001" +   // extra integer 8, alphabet 1, "01"
		bitsOf(0, 8) + "00 01 0011 00000000 01100001 00000000 01100010" +
		bitsOf(0, 8) + "000000 00 0 0000001", vocabulary);   // element name, local name 2
	EXPECT_EQ("ab", vocabulary.restrictedAlphabets().alphabet(16).characters());
	EXPECT_EQ("v", vocabulary.value(DocumentVocabulary::ATTRIBUTE_VALUE, 1));
	EXPECT_EQ("01", vocabulary.value(DocumentVocabulary::CONTENT_CHARACTER_CHUNK, 1));
	EXPECT_EQ("ab", vocabulary.value(DocumentVocabulary::OTHER_STRING, 1));
	EXPECT_EQ(QualifiedNameEntry(0xFFFFFFFF, 0xFFFFFFFF, 2), vocabulary.elementVocabulary()->value(1));
	EXPECT_EQ(1u, vocabulary.attributeVocabulary()->size());

	// The same byte sequence cut anywhere ends in a parse exception.
	const std::string octets = fromBits(localNameA);
	for (std::size_t length = 0; length < octets.size(); ++length)
	{
		SCOPED_TRACE(length);
		DocumentVocabulary target;
		EXPECT_THROW(decodeHeader(octetBits(octets.substr(0, length)), target), FISParseException);
	}
}


TEST_P(InitialVocabularyTest, WhatTheTablesCannotHoldIsRefused)
{
	struct { const char* name; std::string bits; std::string message; } cases[] =
	{
		{"no flag", initialVocabulary("00000 00000000") + bitsOf(0, 8),
			"Initial Vocabulary detected with zero information in it - at least one dictionary required"},
		{"an external vocabulary that cannot be opened", initialVocabulary("10000 00000000") + identifying("urn:w"),
			"urn:w"},
		{"a value twice in a hash table", initialVocabulary("00000 10000000") + bitsOf(1, 8) + identifying("a") + identifying("a"),
			"Initial vocabulary lists a value twice in one table"},
		{"a reserved alphabet", initialVocabulary("00000 00001000") + bitsOf(0, 8) + "00 10 00000000 00000010 0000 00000000",
			"no characters"},
		{"an alphabet past the table", initialVocabulary("00000 00001000") + bitsOf(0, 8) + "00 10 00000000 00100000 0000 00000000",
			"Restricted alphabet 33 is not defined"},
	};
	for (const auto& c: cases)
	{
		SCOPED_TRACE(c.name);
		DocumentVocabulary vocabulary("urn:v");
		try
		{
			decodeHeader(c.bits, vocabulary);
			ADD_FAILURE() << "no exception";
		}
		catch (const Ixor::Exception& exc)
		{
			EXPECT_THAT(exc.message(), HasSubstr(c.message));
		}
	}

	// A vocabulary that carries the URI is kept with all its entries.
	DocumentVocabulary external("urn:v");
	bool found;
	external.index(DocumentVocabulary::LOCAL_NAME, "x", found);
	decodeHeader(initialVocabulary("10000 10000000") + identifying("urn:v") + bitsOf(0, 8) + identifying("a"), external);
	EXPECT_EQ((std::vector<std::string>{"", "x", "a"}), entries(*external.vocabulary(DocumentVocabulary::LOCAL_NAME)));
}


TEST(VocabularyTest, CopiesFindTheirOwnEntriesAfterTheSourceIsGone)
{
	// The map and hash tables keep lookup data beside their entries; a copy
	// must keep working on its own once the source is destroyed.
	for (DocumentVocabulary::VocabularyImpl impl: {DocumentVocabulary::VOC_MAP, DocumentVocabulary::VOC_HASH})
	{
		SCOPED_TRACE(impl);
		DocumentVocabulary* pSource = new DocumentVocabulary(impl);
		bool found = false;
		for (int i = 0; i < 300; ++i) pSource->index(DocumentVocabulary::LOCAL_NAME, "name" + std::to_string(i), found);
		pSource->elementVocabulary()->index(QualifiedNameEntry(0, 0, 7), found);
		DocumentVocabulary copy(*pSource);
		std::unique_ptr<Vocabulary<std::string>> pClone(pSource->vocabulary(DocumentVocabulary::LOCAL_NAME)->clone());
		delete pSource;
		EXPECT_EQ(151u, copy.exists(DocumentVocabulary::LOCAL_NAME, "name150", found));
		EXPECT_EQ(151u, pClone->exists("name150", found));
		EXPECT_EQ(1u, copy.elementVocabulary()->exists(QualifiedNameEntry(0, 0, 7), found));
		EXPECT_EQ(301u, copy.index(DocumentVocabulary::LOCAL_NAME, "new", found));
		EXPECT_FALSE(found);
	}
}
