#include "DumpSummary.h"
#include "TextFormat.h"
#include "Ixor/FastInfoset/DocumentVocabulary.h"
#include "Poco/NumberFormatter.h"
#include <ostream>
#include <string>


using Ixor::FastInfoset::DocumentVocabulary;
using Poco::NumberFormatter;


namespace Fitool {


namespace
{
	std::string split(Poco::UInt64 literal, Poco::UInt64 indexed)
	{
		return " (" + NumberFormatter::format(literal) + " literal, " + NumberFormatter::format(indexed) + " indexed)";
	}


	std::string plural(Poco::UInt64 count, const std::string& one, const std::string& many)
	{
		return NumberFormatter::format(count) + " " + (count == 1 ? one : many);
	}
}


DumpSummary::DumpSummary():
	_headerBits(0),
	_typedChunks(0),
	_elements(0),
	_attributes(0),
	_namespaces(0),
	_comments(0),
	_processingInstructions(0),
	_declarations(0)
{
	for (Poco::UInt64& bits: _bits) bits = 0;
}


void DumpSummary::addBits(Category category, Poco::UInt64 bits)
{
	_bits[category] += bits;
}


void DumpSummary::countName(bool literal)
{
	++(literal ? _names.literal : _names.indexed);
}


void DumpSummary::countAttributeValue(bool literal)
{
	++(literal ? _attributeValues.literal : _attributeValues.indexed);
}


void DumpSummary::countChunk(bool literal, bool typed)
{
	if (typed) ++_typedChunks;
	else ++(literal ? _chunks.literal : _chunks.indexed);
}


void DumpSummary::countElement()
{
	++_elements;
}


void DumpSummary::countAttribute()
{
	++_attributes;
}


void DumpSummary::countNamespace()
{
	++_namespaces;
}


void DumpSummary::countComment()
{
	++_comments;
}


void DumpSummary::countProcessingInstruction()
{
	++_processingInstructions;
}


void DumpSummary::countDeclaration()
{
	++_declarations;
}


void DumpSummary::setHeaderBits(Poco::UInt64 bits)
{
	_headerBits = bits;
}


void DumpSummary::print(std::ostream& out, Poco::UInt64 totalOctets) const
{
	const double total = static_cast<double>(totalOctets) * 8;
	double rest = total;
	for (int c = NAMES; c < CATEGORY_COUNT; ++c) rest -= static_cast<double>(_bits[c]);

	const std::string labels[CATEGORY_COUNT] =
	{
		"structure", "names", "attribute values", "character content", "typed data", "comments and PIs"
	};
	const std::string counts[CATEGORY_COUNT] =
	{
		plural(_elements, "element", "elements") + ", " + plural(_declarations, "declaration", "declarations")
			+ "; header " + TextFormat::octets(static_cast<double>(_headerBits)) + " octets",
		NumberFormatter::format(_elements) + " element and " + plural(_attributes, "attribute name", "attribute names")
			+ split(_names.literal, _names.indexed) + ", " + plural(_namespaces, "namespace declaration", "namespace declarations"),
		plural(_attributeValues.literal + _attributeValues.indexed, "value", "values") + split(_attributeValues.literal, _attributeValues.indexed),
		plural(_chunks.literal + _chunks.indexed, "chunk", "chunks") + split(_chunks.literal, _chunks.indexed),
		plural(_typedChunks, "chunk", "chunks"),
		plural(_comments, "comment", "comments") + ", " + plural(_processingInstructions, "processing instruction", "processing instructions")
	};

	out << "Summary\n";
	out << "  " << TextFormat::padRight("category", 20) << TextFormat::padLeft("octets", 10) << TextFormat::padLeft("share", 8) << "  items\n";
	for (int c = STRUCTURE; c < CATEGORY_COUNT; ++c)
	{
		const double bits = c == STRUCTURE ? rest : static_cast<double>(_bits[c]);
		out << "  " << TextFormat::padRight(labels[c], 20) << TextFormat::padLeft(TextFormat::octets(bits), 10)
			<< TextFormat::padLeft(TextFormat::percent(bits, total), 8) << "  " << counts[c] << '\n';
	}
	out << "  " << TextFormat::padRight("total", 20) << TextFormat::padLeft(NumberFormatter::format(totalOctets), 10) << '\n';
}


void DumpSummary::printVocabulary(std::ostream& out, const DocumentVocabulary& vocabulary)
{
	struct Table
	{
		const char* label;
		DocumentVocabulary::ID id;
	};
	static const Table TABLES[] =
	{
		{"prefixes", DocumentVocabulary::PREFIX},
		{"namespace names", DocumentVocabulary::NAMESPACE_NAME},
		{"local names", DocumentVocabulary::LOCAL_NAME},
		{"other NCNames", DocumentVocabulary::OTHER_NCNAME},
		{"other URIs", DocumentVocabulary::OTHER_URI},
		{"attribute values", DocumentVocabulary::ATTRIBUTE_VALUE},
		{"content character chunks", DocumentVocabulary::CONTENT_CHARACTER_CHUNK},
		{"other strings", DocumentVocabulary::OTHER_STRING}
	};
	// Every table holds a placeholder at index 0; prefixes and namespace
	// names hold the predefined xml entry at index 1.
	out << "Vocabulary tables at the end (entries)\n";
	const std::size_t alphabets = vocabulary.restrictedAlphabets().alphabets().size();
	out << "  " << TextFormat::padRight("restricted alphabets", 26) << TextFormat::padLeft(NumberFormatter::format(alphabets), 8)
		<< "  (2 built in, 13 reserved)\n";
	for (const Table& table: TABLES)
	{
		const std::size_t entries = vocabulary.vocabulary(table.id)->size() - 1;
		out << "  " << TextFormat::padRight(table.label, 26) << TextFormat::padLeft(NumberFormatter::format(entries), 8);
		if (table.id == DocumentVocabulary::PREFIX || table.id == DocumentVocabulary::NAMESPACE_NAME) out << "  (xml included)";
		out << '\n';
	}
	out << "  " << TextFormat::padRight("element names", 26) << TextFormat::padLeft(NumberFormatter::format(vocabulary.elementVocabulary()->size() - 1), 8) << '\n';
	out << "  " << TextFormat::padRight("attribute names", 26) << TextFormat::padLeft(NumberFormatter::format(vocabulary.attributeVocabulary()->size() - 1), 8) << '\n';
}


} // namespace Fitool
