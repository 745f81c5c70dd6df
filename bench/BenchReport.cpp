#include "BenchReport.h"
#include <algorithm>
#include <cmath>
#include <cstdio>


namespace Bench {


const std::vector<Measure>& measures()
{
	static const std::vector<Measure> MEASURES =
	{
		{"memcpy",        "memcpy of the XML (ceiling)"},
		{"parse_fi",      "FI -> SAX: FastInfosetParser"},
		{"parse_sax",     "XML -> SAX: host SAXParser"},
		{"parse_expat",   "XML -> SAX: expat"},
		{"parse_libxml2", "XML -> SAX: libxml2 SAX2"},
		{"write_fi",      "events -> FI: FastInfosetWriter"},
		{"write_xml",     "events -> XML: host XMLWriter"},
		{"convertToFIS",  "XML -> FI: Converter::convertToFIS"},
		{"convertToXML",  "FI -> XML: Converter::convertToXML"},
	};
	return MEASURES;
}


const std::vector<Measure>& fixedCostMeasures()
{
	static const std::vector<Measure> MEASURES =
	{
		{"fixed/parse_fi",           "FI parse, the parser reused"},
		{"fixed/write_fi",           "FI write, a new writer, buffer reused"},
		{"fixed/write_fi_restarted", "FI write, the writer restarted"},
	};
	return MEASURES;
}


const std::vector<Measure>& manyDocumentMeasures()
{
	static const std::vector<Measure> MEASURES =
	{
		{"many/parse_fi",           "FI parse, one parser"},
		{"many/write_fi",           "FI write, a new writer each"},
		{"many/write_fi_restarted", "FI write, one writer restarted"},
	};
	return MEASURES;
}


const std::vector<Measure>& vocabularyMeasures()
{
	static const std::vector<Measure> MEASURES =
	{
		{"vocab/write_fi_without", "FI write, no vocabulary"},
		{"vocab/write_fi_with",    "FI write, naming the vocabulary"},
		{"vocab/parse_fi_without", "FI parse, no vocabulary"},
		{"vocab/parse_fi_with",    "FI parse, parser given vocabulary"},
	};
	return MEASURES;
}


const char* const ALMOST_EMPTY_XML = "<a/>";


bool isSmall(const Document& doc)
{
	return doc.fileSize <= SMALL_DOCUMENT_SIZE;
}


std::vector<const Document*> smallDocuments(const Documents& documents)
{
	std::vector<const Document*> small;
	for (const std::unique_ptr<Document>& pDoc: documents)
	{
		if (isSmall(*pDoc)) small.push_back(pDoc.get());
	}
	return small;
}


namespace
{
	std::string format(const char* pattern, double value)
	{
		char buffer[64];
		std::snprintf(buffer, sizeof(buffer), pattern, value);
		return buffer;
	}

	std::string megabytes(std::size_t octets)
	{
		return format(octets < 10000000 ? "%.3f MB" : "%.1f MB", static_cast<double>(octets)/1e6);
	}

	std::string percent(std::size_t part, std::size_t whole)
	{
		return whole ? format("%.1f%%", 100.0*static_cast<double>(part)/static_cast<double>(whole)) : std::string("-");
	}

	std::string padRight(const std::string& s, std::size_t width)
	{
		return s.size() >= width ? s : s + std::string(width - s.size(), ' ');
	}

	std::string padLeft(const std::string& s, std::size_t width)
	{
		return s.size() >= width ? s : std::string(width - s.size(), ' ') + s;
	}

	std::string rate(double octets, double seconds)
	{
		if (seconds <= 0) return "-";
		const double mbps = octets/seconds/1e6;
		return format(mbps < 100 ? "%.2f" : "%.1f", mbps);
	}

	std::string milliseconds(double seconds)
		/// At least three decimals, and four digits that count down to a
		/// nanosecond: a small document takes microseconds.
	{
		const double ms = seconds*1e3;
		int decimals = 3;
		for (double limit = 1; ms < limit && decimals < 6; limit /= 10) ++decimals;
		char pattern[8];
		std::snprintf(pattern, sizeof(pattern), "%%.%df", decimals);
		return format(pattern, ms);
	}

	std::string significant(double value)
		/// Three or four digits that count.
	{
		return format(value >= 100 ? "%.0f" : value >= 10 ? "%.1f" : value >= 1 ? "%.2f" : "%.3f", value);
	}

	std::string perSecond(double seconds)
	{
		if (seconds <= 0) return "-";
		const double count = 1/seconds;
		if (count >= 1e6) return format("%.2fM", count/1e6);
		if (count >= 1e4) return format("%.1fk", count/1e3);
		if (count >= 100) return format("%.0f", count);
		return format("%.2f", count);
	}

	struct Spread
		/// Ratios over documents: their geometric mean and the worst one.
	{
		std::vector<double> values;
		std::vector<std::string> names;

		void add(double value, const std::string& name)
		{
			values.push_back(value);
			names.push_back(name);
		}

		std::string mean(const char* pattern = "%.3f") const
		{
			if (values.empty()) return "-";
			double logSum = 0;
			for (double v: values) logSum += std::log(v);
			return format(pattern, std::exp(logSum/static_cast<double>(values.size())));
		}

		std::string extreme(bool lowest) const
			/// The lowest or the highest value, its document, and how many
			/// documents there are, as columns.
		{
			if (values.empty()) return padLeft("-", 9) + padLeft("0", 6);
			std::size_t at = 0;
			for (std::size_t i = 1; i < values.size(); ++i)
			{
				if (lowest ? values[i] < values[at] : values[i] > values[at]) at = i;
			}
			return padLeft(format("%.3f", values[at]), 9) + padLeft(std::to_string(values.size()), 6) + "  " + names[at];
		}
	};

	const std::size_t LABEL_WIDTH = 40;
}


TableReporter::TableReporter(const Documents& documents, std::ostream& tables):
	benchmark::ConsoleReporter(OO_Tabular),
	_documents(documents),
	_tables(tables)
{
}


void TableReporter::ReportRuns(const std::vector<Run>& reports)
{
	benchmark::ConsoleReporter::ReportRuns(reports);
	for (const Run& run: reports)
	{
		Result& result = _results[run.run_name.function_name];
		if (run.error_occurred)
		{
			result.error = run.error_message;
			continue;
		}
		// With repetitions the median comes after the single runs and wins.
		if (run.run_type == Run::RT_Iteration || run.aggregate_name == "median")
		{
			auto itDocuments = run.counters.find("documents");
			const double documents = itDocuments != run.counters.end() && itDocuments->second.value > 0 ? itDocuments->second.value : 1;
			result.seconds = run.GetAdjustedCPUTime()/benchmark::GetTimeUnitMultiplier(run.time_unit)/documents;
			auto itAllocations = run.counters.find("allocations");
			if (itAllocations != run.counters.end()) result.allocations = itAllocations->second.value/documents;
		}
		else if (run.aggregate_name == "cv")
		{
			result.cv = run.cpu_accumulated_time;
		}
	}
}


void TableReporter::Finalize()
{
	benchmark::ConsoleReporter::Finalize();
	_tables << "\nTimes are CPU time per document (the median when repeated); MB are 10^6 octets.\n"
		<< "docs/s: documents per second, one document after another.\n"
		<< "io MB/s: octets of the row's own input (output for the writers) per second.\n"
		<< "XML-eq MB/s: octets of the document as XML text per second, comparable across rows.\n"
		<< "vs expat: XML-eq throughput relative to expat's parse of the XML text.\n";
	for (const std::unique_ptr<Document>& pDoc: _documents)
	{
		if (pDoc->loaded) printTable(*pDoc);
	}
	printSummary();
	_tables.flush();
}


void TableReporter::printTable(const Document& doc)
{
	bool measured = false;
	for (const Measure& m: measures()) measured = measured || find(std::string(m.id) + "/" + doc.name);
	if (!measured) return;

	_tables << "\n== " << doc.name << ": XML " << megabytes(doc.xmlSize) << ", FI " << megabytes(doc.fiSize)
		<< " (" << percent(doc.fiSize, doc.xmlSize) << " of XML); gzip'd: XML " << megabytes(doc.xmlGzipSize)
		<< ", FI " << megabytes(doc.fiGzipSize) << " (" << percent(doc.fiGzipSize, doc.xmlGzipSize) << ")\n";
	// expat's counts when it ran; any parser's otherwise.
	auto itCounts = doc.counts.find("parse_expat");
	if (itCounts == doc.counts.end()) itCounts = doc.counts.begin();
	std::string facts;
	if (itCounts != doc.counts.end())
		facts = std::to_string(itCounts->second.elements) + " elements, " + std::to_string(itCounts->second.characters) + " octets of character data";
	if (doc.eventCount)
		facts += (facts.empty() ? "" : "; ") + std::to_string(doc.eventCount) + " SAX events recorded in " + megabytes(doc.eventMemory);
	if (!facts.empty()) _tables << "   " << facts << "\n";

	const std::size_t labelWidth = 38;
	_tables << "   " << padRight("measurement", labelWidth) << padLeft("ms/doc", 10) << padLeft("docs/s", 9)
		<< padLeft("io MB/s", 10) << padLeft("XML-eq MB/s", 13) << padLeft("vs expat", 10) << padLeft("cv", 7) << "\n";
	const double expat = seconds(doc, "parse_expat");
	for (const Measure& m: measures())
	{
		const Result* pResult = find(std::string(m.id) + "/" + doc.name);
		if (!pResult) continue;
		_tables << "   " << padRight(m.label, labelWidth);
		if (!pResult->error.empty())
		{
			_tables << "  failed: " << pResult->error << "\n";
			continue;
		}
		const double s = pResult->seconds;
		_tables << padLeft(milliseconds(s), 10)
			<< padLeft(perSecond(s), 9)
			<< padLeft(rate(ioOctets(doc, m.id), s), 10)
			<< padLeft(rate(static_cast<double>(doc.xmlSize), s), 13)
			<< padLeft(expat > 0 && s > 0 ? format("%.2fx", expat/s) : "-", 10)
			<< padLeft(pResult->cv >= 0 ? format("%.1f%%", 100*pResult->cv) : "", 7) << "\n";
	}
	printChecks(doc);
}


bool TableReporter::countsAgree(const Document& doc)
{
	// Every parser, and expat over the writers' XML, must have seen the
	// same elements; the octets of character data differ where a parser
	// reports line ends or attribute defaults its own way.
	for (const auto& entry: doc.counts)
	{
		if (entry.second.elements != doc.counts.begin()->second.elements) return false;
	}
	return true;
}


void TableReporter::printChecks(const Document& doc)
{
	if (!countsAgree(doc))
	{
		_tables << "   CHECK FAILED: element counts differ:";
		for (const auto& entry: doc.counts) _tables << " " << entry.first << "=" << entry.second.elements;
		_tables << "\n";
	}
	for (const std::string& problem: doc.problems) _tables << "   CHECK FAILED: " << problem << "\n";
	for (const std::string& note: doc.notes) _tables << "   note: " << note << "\n";
}


void TableReporter::printSummary()
{
	std::size_t loaded = 0;
	for (const std::unique_ptr<Document>& pDoc: _documents) loaded += pDoc->loaded ? 1 : 0;
	_tables << "\n== Summary over " << loaded << " documents\n";
	printRatios();
	printSizes();

	_tables << "   XML-equivalent MB/s per measurement (geometric mean):\n";
	for (const Measure& m: measures())
	{
		Spread rates;
		for (const std::unique_ptr<Document>& pDoc: _documents)
		{
			const double s = seconds(*pDoc, m.id);
			if (s > 0) rates.add(static_cast<double>(pDoc->xmlSize)/s/1e6, pDoc->name);
		}
		if (!rates.values.empty()) _tables << "   " << padRight(m.label, LABEL_WIDTH) << padLeft(rates.mean("%.1f"), 8) << "\n";
	}

	printSmallDocuments();
	printVocabularies();
	printCostsPerDocument(("Costs of every document, measured on an almost empty one (" + std::string(ALMOST_EMPTY_XML) + "):").c_str(),
		fixedCostMeasures());
	std::string small;
	for (const Document* pDoc: smallDocuments(_documents)) small += (small.empty() ? "" : ", ") + pDoc->name;
	printCostsPerDocument(("Many documents, one after another (" + small + " in turn):").c_str(), manyDocumentMeasures());

	const std::size_t failed = failedChecks();
	std::size_t notes = 0;
	for (const std::unique_ptr<Document>& pDoc: _documents) notes += pDoc->notes.size();
	_tables << "   Checks: " << (failed ? std::to_string(failed) + " FAILED (see the tables)" : std::string("all passed"));
	if (notes) _tables << "; " << notes << " notes (see the tables)";
	_tables << "\n";
}


void TableReporter::printRatios()
{
	struct Ratio
	{
		const char* label;
		const char* numerator;    // the faster the numerator, the larger the ratio
		const char* denominator;
	};
	static const Ratio RATIOS[] =
	{
		{"FI parse / expat parse",              "parse_fi",     "parse_expat"},
		{"FI parse / libxml2 parse",            "parse_fi",     "parse_libxml2"},
		{"FI parse / host SAXParser parse",     "parse_fi",     "parse_sax"},
		{"FI writer / expat parse",             "write_fi",     "parse_expat"},
		{"FI writer / host XMLWriter",          "write_fi",     "write_xml"},
		{"convertToFIS / host SAXParser parse", "convertToFIS", "parse_sax"},
		{"convertToXML / convertToFIS",         "convertToXML", "convertToFIS"},
	};

	_tables << "   Throughput ratios, XML-equivalent (above 1: the first is faster):\n"
		<< "   " << padRight("", LABEL_WIDTH) << padLeft("geo-mean", 8) << padLeft("lowest", 9) << padLeft("docs", 6) << "  lowest on\n";
	for (const Ratio& ratio: RATIOS)
	{
		Spread ratios;
		for (const std::unique_ptr<Document>& pDoc: _documents)
		{
			const double a = seconds(*pDoc, ratio.numerator);
			const double b = seconds(*pDoc, ratio.denominator);
			if (a > 0 && b > 0) ratios.add(b/a, pDoc->name);
		}
		_tables << "   " << padRight(ratio.label, LABEL_WIDTH) << padLeft(ratios.mean(), 8) << ratios.extreme(true) << "\n";
	}
}


void TableReporter::printSizes()
{
	Spread sizes;
	Spread gzipSizes;
	for (const std::unique_ptr<Document>& pDoc: _documents)
	{
		if (!pDoc->loaded || !pDoc->xmlSize) continue;
		sizes.add(static_cast<double>(pDoc->fiSize)/static_cast<double>(pDoc->xmlSize), pDoc->name);
		if (pDoc->xmlGzipSize) gzipSizes.add(static_cast<double>(pDoc->fiGzipSize)/static_cast<double>(pDoc->xmlGzipSize), pDoc->name);
	}
	_tables << "   Sizes (below 1: FI is smaller):\n"
		<< "   " << padRight("", LABEL_WIDTH) << padLeft("geo-mean", 8) << padLeft("largest", 9) << padLeft("docs", 6) << "  largest on\n"
		<< "   " << padRight("FI size / XML size", LABEL_WIDTH) << padLeft(sizes.mean(), 8) << sizes.extreme(false) << "\n"
		<< "   " << padRight("FI gzip'd / XML gzip'd", LABEL_WIDTH) << padLeft(gzipSizes.mean(), 8) << gzipSizes.extreme(false) << "\n";
}


void TableReporter::printSmallDocuments()
{
	std::vector<const Document*> small;
	for (const Document* pDoc: smallDocuments(_documents))
	{
		if (pDoc->loaded) small.push_back(pDoc);
	}
	if (small.empty()) return;
	_tables << "   Documents per second on the small documents (at most " << SMALL_DOCUMENT_SIZE/1000 << " kB):\n";
	printDocumentsPerSecond(small, measures());
}


void TableReporter::printVocabularies()
{
	std::vector<const Document*> withVocabulary;
	for (const Document* pDoc: smallDocuments(_documents))
	{
		if (pDoc->vocabularySize) withVocabulary.push_back(pDoc);
	}
	if (withVocabulary.empty()) return;
	_tables << "   Shared vocabularies: each document written naming a vocabulary built from other documents of its kind:\n"
		<< "   " << padRight("", LABEL_WIDTH) << padLeft("samples", 8) << padLeft("vocabulary", 11) << padLeft("FI without", 11)
		<< padLeft("FI with", 9) << padLeft("with/without", 13) << "\n";
	for (const Document* pDoc: withVocabulary)
	{
		_tables << "   " << padRight(pDoc->name, LABEL_WIDTH) << padLeft(std::to_string(pDoc->vocabularySamples.size()), 8)
			<< padLeft(std::to_string(pDoc->vocabularySize), 11) << padLeft(std::to_string(pDoc->fiWithoutVocabularySize), 11)
			<< padLeft(std::to_string(pDoc->fiVocabularySize), 9)
			<< padLeft(format("%.3f", static_cast<double>(pDoc->fiVocabularySize)/static_cast<double>(pDoc->fiWithoutVocabularySize)), 13) << "\n";
	}
	_tables << "   With and without the vocabulary, documents per second (a new writer for each, one parser for all):\n";
	printDocumentsPerSecond(withVocabulary, vocabularyMeasures());
}


void TableReporter::printDocumentsPerSecond(const std::vector<const Document*>& documents, const std::vector<Measure>& group)
{
	_tables << "   " << padRight("", LABEL_WIDTH);
	for (const Document* pDoc: documents) _tables << padLeft(pDoc->name, std::max<std::size_t>(pDoc->name.size(), 7) + 2);
	_tables << "\n";
	for (const Measure& m: group)
	{
		std::string row;
		bool measured = false;
		for (const Document* pDoc: documents)
		{
			const double s = seconds(*pDoc, m.id);
			measured = measured || s > 0;
			row += padLeft(perSecond(s), std::max<std::size_t>(pDoc->name.size(), 7) + 2);
		}
		if (measured) _tables << "   " << padRight(m.label, LABEL_WIDTH) << row << "\n";
	}
}


void TableReporter::printCostsPerDocument(const char* heading, const std::vector<Measure>& group)
{
	bool measured = false;
	for (const Measure& m: group) measured = measured || find(m.id);
	if (!measured) return;
	// µs is two octets but one column wide.
	_tables << "   " << heading << "\n"
		<< "   " << padRight("", LABEL_WIDTH) << padLeft("\xC2\xB5s/doc", 9) << padLeft("docs/s", 9) << padLeft("allocations/doc", 17) << "\n";
	for (const Measure& m: group)
	{
		const Result* pResult = find(m.id);
		_tables << "   " << padRight(m.label, LABEL_WIDTH);
		if (m.notYet) _tables << "  not measured: " << m.notYet << "\n";
		else if (!pResult) _tables << "  not measured\n";
		else if (!pResult->error.empty()) _tables << "  failed: " << pResult->error << "\n";
		else
		{
			_tables << padLeft(significant(pResult->seconds*1e6), 8) << padLeft(perSecond(pResult->seconds), 9)
				<< padLeft(pResult->allocations >= 0 ? format("%.2f", pResult->allocations) : "-", 17) << "\n";
		}
	}
}


std::size_t TableReporter::failedChecks() const
{
	std::size_t failed = 0;
	for (const std::unique_ptr<Document>& pDoc: _documents)
	{
		failed += pDoc->problems.size() + (countsAgree(*pDoc) ? 0 : 1);
	}
	for (const auto& result: _results) failed += result.second.error.empty() ? 0 : 1;
	return failed;
}


const TableReporter::Result* TableReporter::find(const std::string& name) const
{
	auto it = _results.find(name);
	return it == _results.end() ? nullptr : &it->second;
}


double TableReporter::seconds(const std::string& name) const
{
	const Result* pResult = find(name);
	return pResult && pResult->error.empty() ? pResult->seconds : 0;
}


double TableReporter::seconds(const Document& doc, const std::string& id) const
{
	return seconds(id + "/" + doc.name);
}


double TableReporter::ioOctets(const Document& doc, const std::string& id)
{
	if (id == "parse_fi" || id == "write_fi" || id == "convertToXML") return static_cast<double>(doc.fiSize);
	if (id == "write_xml") return static_cast<double>(doc.xmlWriterSize);
	return static_cast<double>(doc.xmlSize);
}


} // namespace Bench
