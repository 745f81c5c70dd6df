// Measures reading and writing Fast Infoset against reading and writing the
// same documents as XML text, all in memory, and prints one table per
// document and a summary.
//
//   fastinfoset-bench [--benchmark_...] DOCUMENT.xml...
//
// Every row also gives its throughput in "XML-equivalent" MB/s, the size of
// the document as XML text divided by the time, so that rows that read or
// write different encodings of one document compare like with like.
//
// Besides the measurements of each document, the costs that every document
// pays (fixed/...) are measured on an almost empty document, and the small
// documents go one after another through one parser (many/...), as a
// service reads messages; both count allocations per document. Small
// documents with samples of their kind beside them are also written and
// read with and without a vocabulary built from the samples (vocab/...).


#include "AllocationCounter.h"
#include "BenchReport.h"
#include "BenchSupport.h"
#include "Ixor/FastInfoset/FastInfosetParser.h"
#include "Ixor/FastInfoset/FastInfosetWriter.h"
#include "Ixor/FastInfoset/VocabularyDocument.h"
#include "Poco/File.h"
#include "Poco/Path.h"
#include "Poco/SAX/SAXParser.h"
#include <benchmark/benchmark.h>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>


namespace {


using Bench::Counts;
using Bench::Document;
using Bench::Measure;


Bench::Documents documents;
Document* pCurrent = nullptr;


Document& use(Document& doc, bool needEvents)
{
	if (pCurrent != &doc)
	{
		if (pCurrent)
		{
			std::string().swap(pCurrent->xml);
			std::string().swap(pCurrent->fi);
			pCurrent->pEvents.reset();
		}
		pCurrent = &doc;
	}
	if (doc.xml.empty())
	{
		doc.xml = Bench::readFile(doc.path);
		doc.fi = Bench::encodeFastInfoset(doc.xml);
		if (!doc.loaded)
		{
			doc.loaded = true;
			doc.xmlSize = doc.xml.size();
			doc.fiSize = doc.fi.size();
			doc.xmlGzipSize = Bench::gzipSize(doc.xml);
			doc.fiGzipSize = Bench::gzipSize(doc.fi);
		}
	}
	if (needEvents && !doc.pEvents)
	{
		doc.pEvents.reset(new Bench::EventList);
		doc.pEvents->record(doc.xml);
		doc.eventCount = doc.pEvents->eventCount();
		doc.eventMemory = doc.pEvents->memoryUsed();
	}
	return doc;
}


void setRates(benchmark::State& state, const Document& doc, std::size_t ioBytes)
{
	using benchmark::Counter;
	state.counters["io"] = Counter(static_cast<double>(ioBytes), Counter::kIsIterationInvariantRate, Counter::kIs1000);
	state.counters["xml"] = Counter(static_cast<double>(doc.xmlSize), Counter::kIsIterationInvariantRate, Counter::kIs1000);
	state.SetLabel(std::to_string(ioBytes) + " io octets");
}


void keepCounts(Document& doc, const char* id, const Counts& total, benchmark::IterationCount iterations)
{
	if (iterations == 0) return;
	Counts perDocument;
	perDocument.elements = total.elements / static_cast<std::uint64_t>(iterations);
	perDocument.characters = total.characters / static_cast<std::uint64_t>(iterations);
	doc.counts[id] = perDocument;
}


void check(Document& doc, bool ok, const std::string& what)
{
	for (const std::string& seen: doc.checks)
	{
		if (seen == what) return;
	}
	doc.checks.push_back(what);
	if (!ok) doc.problems.push_back(what + ": NO");
}


void note(Document& doc, const std::string& what)
{
	for (const std::string& seen: doc.notes)
	{
		if (seen == what) return;
	}
	doc.notes.push_back(what);
}


void countOutput(Document& doc, const char* id, const std::string& xml)
	/// The elements of a writer's XML output join the parsers' counts.
	/// Output that is not well-formed is the library's or the host's
	/// business, not a failed measurement: it is noted.
{
	Bench::ExpatParser expat;
	try
	{
		expat.parse(xml.data(), xml.size());
		doc.counts[id] = expat.counts;
	}
	catch (const Ixor::Exception& exc)
	{
		note(doc, std::string(id) + ": the XML written is not well-formed, its elements were not counted (expat: " + exc.message() + ")");
	}
}


template <class Body>
void guarded(benchmark::State& state, Body body)
	/// Turns an exception into a failed measurement.
{
	try
	{
		body();
	}
	catch (const Ixor::Exception& exc)
	{
		state.SkipWithError(exc.displayText().c_str());
	}
	catch (const std::exception& exc)
	{
		state.SkipWithError(exc.what());
	}
}


//
// The measurements
//
void benchMemcpy(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, false);
		std::vector<char> target(doc.xml.size());
		std::memset(target.data(), 0, target.size());
		for (auto _: state)
		{
			std::memcpy(target.data(), doc.xml.data(), doc.xml.size());
			benchmark::DoNotOptimize(target.data());
			benchmark::ClobberMemory();
		}
		setRates(state, doc, doc.xml.size());
	});
}


void benchParseFI(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, false);
		Bench::NullHandler handler;
		Ixor::FastInfoset::FastInfosetParser parser;
		Bench::setUpFastInfosetParser(parser, handler);
		for (auto _: state)
		{
			Bench::parseFastInfoset(parser, doc.fi);
		}
		keepCounts(doc, "parse_fi", handler.counts, state.iterations());
		setRates(state, doc, doc.fi.size());
	});
}


void benchParseSAX(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, false);
		Bench::NullHandler handler;
		Ixor::XML::SAXParser parser;
		Bench::setUpXMLParser(parser, handler);
		for (auto _: state)
		{
			Bench::parseXML(parser, doc.xml);
		}
		keepCounts(doc, "parse_sax", handler.counts, state.iterations());
		setRates(state, doc, doc.xml.size());
	});
}


void benchParseExpat(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, false);
		Bench::ExpatParser parser;
		for (auto _: state)
		{
			parser.parse(doc.xml.data(), doc.xml.size());
		}
		keepCounts(doc, "parse_expat", parser.counts, state.iterations());
		setRates(state, doc, doc.xml.size());
	});
}


void benchParseLibXml2(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, false);
		Bench::LibXml2Parser parser;
		for (auto _: state)
		{
			parser.parse(doc.xml.data(), doc.xml.size());
		}
		keepCounts(doc, "parse_libxml2", parser.counts, state.iterations());
		setRates(state, doc, doc.xml.size());
	});
}


void benchWriteFI(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, true);
		Bench::OutputBuffer out;
		for (auto _: state)
		{
			Bench::writeFastInfoset(*doc.pEvents, out);
		}
		check(doc, out.str() == doc.fi, "replayed events written as FI give convertToFIS's octets");
		setRates(state, doc, out.size());
	});
}


void benchWriteXML(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, true);
		Bench::OutputBuffer out;
		for (auto _: state)
		{
			Bench::writeXML(*doc.pEvents, out);
		}
		doc.xmlWriterSize = out.size();
		countOutput(doc, "write_xml", out.str());
		setRates(state, doc, out.size());
	});
}


void benchConvertToFIS(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, false);
		Bench::OutputBuffer out;
		for (auto _: state)
		{
			Bench::convertToFastInfoset(doc.xml, out);
		}
		check(doc, out.str() == doc.fi, "convertToFIS from a memory stream gives the same octets");
		setRates(state, doc, doc.xml.size());
	});
}


void benchConvertToXML(benchmark::State& state, Document* pDoc)
{
	guarded(state, [&]
	{
		Document& doc = use(*pDoc, false);
		Bench::OutputBuffer out;
		for (auto _: state)
		{
			Bench::convertToXML(doc.fi, out);
		}
		countOutput(doc, "convertToXML", out.str());
		setRates(state, doc, doc.fi.size());
	});
}


//
// Costs of every document, and many documents one after another
//
struct Sample
	/// A small document in the forms that the measurements read.
{
	std::string fi;
	Bench::EventList events;
	std::uint64_t elements = 0;   // as expat counts them
};


typedef std::vector<std::unique_ptr<Sample>> Samples;


std::unique_ptr<Sample> makeSample(const std::string& xml)
{
	std::unique_ptr<Sample> pSample(new Sample);
	pSample->fi = Bench::encodeFastInfoset(xml);
	pSample->events.record(xml);
	Bench::ExpatParser expat;
	expat.parse(xml.data(), xml.size());
	pSample->elements = expat.counts.elements;
	return pSample;
}


const Samples& almostEmptySample()
{
	static Samples samples;
	if (samples.empty()) samples.push_back(makeSample(Bench::ALMOST_EMPTY_XML));
	return samples;
}


const Samples& smallSamples()
{
	static Samples samples;
	if (samples.empty())
	{
		for (const Document* pDoc: Bench::smallDocuments(documents)) samples.push_back(makeSample(Bench::readFile(pDoc->path)));
	}
	return samples;
}


template <class Round>
void inTurn(benchmark::State& state, const Samples& samples, Round round)
	/// Each iteration is one round: every sample once, in turn. Two rounds
	/// before the timed ones let tables and buffers reach the size that
	/// the documents need, so that the allocations counted are those of
	/// the steady state.
{
	round();
	round();
	const std::uint64_t before = Bench::allocationCount();
	for (auto _: state) round();
	const std::uint64_t allocations = Bench::allocationCount() - before;
	using benchmark::Counter;
	state.counters["documents"] = Counter(static_cast<double>(samples.size()));
	state.counters["allocations"] = Counter(static_cast<double>(allocations), Counter::kAvgIterations);
}


void parseInTurn(benchmark::State& state, const Samples& samples)
{
	Bench::NullHandler handler;
	Ixor::FastInfoset::FastInfosetParser parser;
	Bench::setUpFastInfosetParser(parser, handler);
	std::uint64_t elementsPerRound = 0;
	for (const std::unique_ptr<Sample>& pSample: samples) elementsPerRound += pSample->elements;
	inTurn(state, samples, [&]
	{
		for (const std::unique_ptr<Sample>& pSample: samples) Bench::parseFastInfoset(parser, pSample->fi);
	});
	if (handler.counts.elements != elementsPerRound*static_cast<std::uint64_t>(state.iterations() + 2))
		state.SkipWithError("the reused parser did not see every element of every document");
}


void writeInTurn(benchmark::State& state, const Samples& samples, bool restarted)
	/// A new writer for each document, or one writer restarted for each.
{
	Bench::OutputBuffer out;
	Ixor::FastInfoset::FastInfosetWriter writer(out.stream(), false, Ixor::FastInfoset::DocumentVocabulary::VOC_MAP);
	auto write = [&](const Bench::EventList& events)
	{
		if (!restarted) return Bench::writeFastInfoset(events, out);
		out.reset();
		writer.reset(out.stream());
		events.replay(writer, &writer, &writer);
	};
	inTurn(state, samples, [&]
	{
		for (const std::unique_ptr<Sample>& pSample: samples) write(pSample->events);
	});
	for (const std::unique_ptr<Sample>& pSample: samples)
	{
		write(pSample->events);
		if (out.str() != pSample->fi)
		{
			state.SkipWithError("replayed events written as FI do not give convertToFIS's octets");
			break;
		}
	}
}


void benchFixedParseFI(benchmark::State& state)
{
	guarded(state, [&] { parseInTurn(state, almostEmptySample()); });
}


void benchFixedWriteFI(benchmark::State& state)
{
	guarded(state, [&] { writeInTurn(state, almostEmptySample(), false); });
}


void benchFixedWriteFIRestarted(benchmark::State& state)
{
	guarded(state, [&] { writeInTurn(state, almostEmptySample(), true); });
}


void benchManyParseFI(benchmark::State& state)
{
	guarded(state, [&] { parseInTurn(state, smallSamples()); });
}


void benchManyWriteFI(benchmark::State& state)
{
	guarded(state, [&] { writeInTurn(state, smallSamples(), false); });
}


void benchManyWriteFIRestarted(benchmark::State& state)
{
	guarded(state, [&] { writeInTurn(state, smallSamples(), true); });
}


//
// With and without a shared vocabulary
//
struct VocabularyCase
	/// A small document, the vocabulary built from its samples as a writer
	/// and a parser take it, and the document written with and without it.
{
	Ixor::FastInfoset::DocumentVocabulary writing{Ixor::FastInfoset::DocumentVocabulary::VOC_MAP};
	Ixor::FastInfoset::DocumentVocabulary reading{Ixor::FastInfoset::DocumentVocabulary::VOC_VECTOR};
	Bench::EventList events;
	std::string fiWith;
	std::string fiWithout;
	std::uint64_t elements = 0;   // as expat counts them
};


VocabularyCase& vocabularyCase(Document& doc)
{
	static std::map<const Document*, std::unique_ptr<VocabularyCase>> cases;
	std::unique_ptr<VocabularyCase>& pCase = cases[&doc];
	if (pCase) return *pCase;
	using Ixor::FastInfoset::VocabularyDocument;
	pCase.reset(new VocabularyCase);
	const std::string xml = Bench::readFile(doc.path);
	const std::string saved = Bench::buildVocabulary(doc.vocabularySamples, "urn:" + doc.name);
	std::istringstream forWriting(saved);
	pCase->writing = VocabularyDocument::load(forWriting);
	std::istringstream forReading(saved);
	pCase->reading = VocabularyDocument::load(forReading, Ixor::FastInfoset::DocumentVocabulary::VOC_VECTOR);
	pCase->events.record(xml);
	Bench::OutputBuffer out;
	Bench::writeFastInfoset(pCase->events, out, pCase->writing);
	pCase->fiWith = out.str();
	pCase->fiWithout = Bench::encodeFastInfoset(xml);
	Bench::ExpatParser expat;
	expat.parse(xml.data(), xml.size());
	pCase->elements = expat.counts.elements;
	doc.vocabularySize = saved.size();
	doc.fiVocabularySize = pCase->fiWith.size();
	doc.fiWithoutVocabularySize = pCase->fiWithout.size();
	return *pCase;
}


void benchVocabularyWrite(benchmark::State& state, Document* pDoc, bool withVocabulary)
{
	guarded(state, [&]
	{
		VocabularyCase& c = vocabularyCase(*pDoc);
		Bench::OutputBuffer out;
		for (auto _: state)
		{
			if (withVocabulary) Bench::writeFastInfoset(c.events, out, c.writing);
			else Bench::writeFastInfoset(c.events, out);
		}
		if (out.str() != (withVocabulary ? c.fiWith : c.fiWithout)) state.SkipWithError("the writer's octets differ from those of the first writing");
		setRates(state, *pDoc, out.size());
	});
}


void benchVocabularyParse(benchmark::State& state, Document* pDoc, bool withVocabulary)
{
	guarded(state, [&]
	{
		VocabularyCase& c = vocabularyCase(*pDoc);
		const std::string& fi = withVocabulary ? c.fiWith : c.fiWithout;
		Bench::NullHandler handler;
		// One parser for every document, as a service reads its messages:
		// each document starts from the vocabulary as it was given.
		std::unique_ptr<Ixor::FastInfoset::FastInfosetParser> pParser(withVocabulary
			? new Ixor::FastInfoset::FastInfosetParser(c.reading) : new Ixor::FastInfoset::FastInfosetParser);
		Bench::setUpFastInfosetParser(*pParser, handler);
		for (auto _: state)
		{
			Bench::parseFastInfoset(*pParser, fi);
		}
		if (handler.counts.elements != c.elements*static_cast<std::uint64_t>(state.iterations()))
			state.SkipWithError("the parser did not see every element");
		setRates(state, *pDoc, fi.size());
	});
}


typedef void (*InTurnFunction)(benchmark::State&);


InTurnFunction inTurnFunction(const std::string& id)
{
	static const std::map<std::string, InTurnFunction> FUNCTIONS =
	{
		{"fixed/parse_fi", benchFixedParseFI},
		{"fixed/write_fi", benchFixedWriteFI},
		{"fixed/write_fi_restarted", benchFixedWriteFIRestarted},
		{"many/parse_fi", benchManyParseFI},
		{"many/write_fi", benchManyWriteFI},
		{"many/write_fi_restarted", benchManyWriteFIRestarted},
	};
	return FUNCTIONS.at(id);
}


typedef std::pair<void (*)(benchmark::State&, Document*, bool), bool> VocabularyFunction;


const VocabularyFunction& vocabularyFunction(const std::string& id)
	/// The measurement and whether it is the one with the vocabulary.
{
	static const std::map<std::string, VocabularyFunction> FUNCTIONS =
	{
		{"vocab/write_fi_without", {benchVocabularyWrite, false}},
		{"vocab/write_fi_with",    {benchVocabularyWrite, true}},
		{"vocab/parse_fi_without", {benchVocabularyParse, false}},
		{"vocab/parse_fi_with",    {benchVocabularyParse, true}},
	};
	return FUNCTIONS.at(id);
}


typedef void (*BenchFunction)(benchmark::State&, Document*);


BenchFunction benchFunction(const std::string& id)
{
	static const std::map<std::string, BenchFunction> FUNCTIONS =
	{
		{"memcpy", benchMemcpy},
		{"parse_fi", benchParseFI},
		{"parse_sax", benchParseSAX},
		{"parse_expat", benchParseExpat},
		{"parse_libxml2", benchParseLibXml2},
		{"write_fi", benchWriteFI},
		{"write_xml", benchWriteXML},
		{"convertToFIS", benchConvertToFIS},
		{"convertToXML", benchConvertToXML},
	};
	return FUNCTIONS.at(id);
}


} // namespace


int main(int argc, char** argv)
{
	benchmark::Initialize(&argc, argv);
	if (argc < 2)
	{
		std::cerr << "usage: " << argv[0] << " [--benchmark_filter=REGEX] [--benchmark_...] DOCUMENT.xml...\n"
			"Measurements: ";
		for (const Measure& m: Bench::measures()) std::cerr << m.id << " ";
		std::cerr << "\nBenchmark names are MEASUREMENT/DOCUMENT, the document's file name without .xml;\n"
			"besides: ";
		for (const std::vector<Measure>* pGroup: {&Bench::fixedCostMeasures(), &Bench::manyDocumentMeasures()})
		{
			for (const Measure& m: *pGroup) std::cerr << (m.notYet ? "" : std::string(m.id) + " ");
		}
		std::cerr << "\n";
		return 2;
	}
	for (int i = 1; i < argc; ++i)
	{
		std::unique_ptr<Document> pDoc(new Document);
		pDoc->path = argv[i];
		pDoc->name = Poco::Path(pDoc->path).getBaseName();
		pDoc->fileSize = static_cast<std::size_t>(Poco::File(pDoc->path).getSize());
		documents.push_back(std::move(pDoc));
	}
	for (const std::unique_ptr<Document>& pDoc: documents)
	{
		for (const Measure& m: Bench::measures())
		{
			benchmark::RegisterBenchmark((std::string(m.id) + "/" + pDoc->name).c_str(), benchFunction(m.id), pDoc.get())
				->Unit(benchmark::kMillisecond);
		}
	}
	for (const std::unique_ptr<Document>& pDoc: documents)
	{
		if (!Bench::isSmall(*pDoc)) continue;
		pDoc->vocabularySamples = Bench::vocabularySamples(pDoc->path);
		if (pDoc->vocabularySamples.empty()) continue;
		for (const Measure& m: Bench::vocabularyMeasures())
		{
			const VocabularyFunction& f = vocabularyFunction(m.id);
			benchmark::RegisterBenchmark((std::string(m.id) + "/" + pDoc->name).c_str(), f.first, pDoc.get(), f.second)
				->Unit(benchmark::kMicrosecond);
		}
	}
	std::vector<Measure> inTurn = Bench::fixedCostMeasures();
	if (!Bench::smallDocuments(documents).empty())
		inTurn.insert(inTurn.end(), Bench::manyDocumentMeasures().begin(), Bench::manyDocumentMeasures().end());
	for (const Measure& m: inTurn)
	{
		if (!m.notYet) benchmark::RegisterBenchmark(m.id, inTurnFunction(m.id))->Unit(benchmark::kMicrosecond);
	}

	Bench::TableReporter reporter(documents, std::cout);
	reporter.SetOutputStream(&std::cerr);
	reporter.SetErrorStream(&std::cerr);
	benchmark::RunSpecifiedBenchmarks(&reporter);
	benchmark::Shutdown();
	return 0;
}
