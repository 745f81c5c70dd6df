//
// DumpSummary.h
//
// Tool: fitool
// Module: DumpSummary
//


#ifndef Fitool_DumpSummary_INCLUDED
#define Fitool_DumpSummary_INCLUDED


#include "Poco/Types.h"
#include <iosfwd>


namespace Ixor {
namespace FastInfoset {
	class DocumentVocabulary;
} }


namespace Fitool {


class DumpSummary
	/// What `fitool dump` counts while it walks a document: the bits spent
	/// on each category of item and how many items of each kind there were,
	/// printed as the listing's closing table.
{
public:
	enum Category
	{
		STRUCTURE,          // header, element framing, terminators, padding, declarations
		NAMES,              // element, attribute and namespace names
		ATTRIBUTE_VALUES,
		CHARACTER_CONTENT,  // character chunks as text, CDATA included
		TYPED_DATA,         // character chunks of the built-in algorithms 1 to 9
		COMMENTS_AND_PIS,
		CATEGORY_COUNT
	};

	DumpSummary();

	void addBits(Category category, Poco::UInt64 bits);
		/// Counts bits for a category other than STRUCTURE, which gets
		/// whatever the others leave.

	void countName(bool literal);
	void countAttributeValue(bool literal);
	void countChunk(bool literal, bool typed);
	void countElement();
	void countAttribute();
	void countNamespace();
	void countComment();
	void countProcessingInstruction();
	void countDeclaration();
		/// Document type declarations, entity references, notations and
		/// unparsed entities.

	void setHeaderBits(Poco::UInt64 bits);

	void print(std::ostream& out, Poco::UInt64 totalOctets) const;
		/// The table of octets and counts by category.

	static void printVocabulary(std::ostream& out, const Ixor::FastInfoset::DocumentVocabulary& vocabulary);
		/// The number of entries of each table.

private:
	struct Count
	{
		Poco::UInt64 literal = 0;
		Poco::UInt64 indexed = 0;
	};

	Poco::UInt64 _bits[CATEGORY_COUNT];
	Poco::UInt64 _headerBits;
	Count        _names;
	Count        _attributeValues;
	Count        _chunks;
	Poco::UInt64 _typedChunks;
	Poco::UInt64 _elements;
	Poco::UInt64 _attributes;
	Poco::UInt64 _namespaces;
	Poco::UInt64 _comments;
	Poco::UInt64 _processingInstructions;
	Poco::UInt64 _declarations;
};


} // namespace Fitool


#endif // Fitool_DumpSummary_INCLUDED
