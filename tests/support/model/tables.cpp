#include "support/model/tables.h"

#include "support/test_files.h"

#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>

namespace test::model {

namespace {

using Row = std::vector<std::string>;

Row Split(const std::string& line, char separator) {
    Row fields;
    std::istringstream stream(line);
    for (std::string field; std::getline(stream, field, separator);)
        fields.push_back(field);
    return fields;
}

/// Calls `use` for each line behind the column names; missing trailing fields are empty.
void ForEachRow(const std::string& name, std::size_t columns, const std::function<void(const Row&)>& use) {
    std::ifstream file(SourceFolder() / "src" / "decoder" / "tables" / name);
    std::string line;
    if (!std::getline(file, line))
        throw std::runtime_error("cannot read table " + name);
    while (std::getline(file, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        Row row = Split(line, ',');
        row.resize(columns);
        use(row);
    }
}

int Number(const std::string& text) {
    return std::stoi(text);
}

std::size_t Index(const std::string& text) {
    return static_cast<std::size_t>(std::stoul(text));
}

std::vector<int> Numbers(const std::string& text) {
    std::vector<int> numbers;
    for (const std::string& field : Split(text, ' '))
        numbers.push_back(Number(field));
    return numbers;
}

std::uint32_t Code(const std::string& bits) {
    return bits.empty() ? 0U : static_cast<std::uint32_t>(std::stoul(bits, nullptr, 2));
}

std::size_t VersionIndex(const std::string& version) {
    return version == "1" ? 0 : version == "2" ? 1 : 2;
}

void LoadHuffman(Tables& tables) {
    ForEachRow("huffman.csv", 6, [&](const Row& row) {
        PairTable& table = tables.pairs.at(Index(row[0]));
        table.linbits = Number(row[1]);
        table.codes.push_back({Number(row[2]), Number(row[3]), Number(row[4]), Code(row[5])});
    });
    ForEachRow("huffman_count1.csv", 7, [&](const Row& row) {
        const std::array<int, 4> values{Number(row[1]), Number(row[2]), Number(row[3]), Number(row[4])};
        tables.quads.at(row[0] == "A" ? 0 : 1).push_back({values, Number(row[5]), Code(row[6])});
    });
}

void LoadRates(Tables& tables) {
    ForEachRow("bitrates.csv", 4, [&](const Row& row) {
        const std::size_t version = VersionIndex(row[0]);
        if (row[1] == "II")
            tables.kbpsLayer2.at(version).at(Index(row[2])) = Number(row[3]);
        if (row[1] == "III")
            tables.kbpsLayer3.at(version).at(Index(row[2])) = Number(row[3]);
    });
    ForEachRow("samplerates.csv", 3, [&](const Row& row) {
        tables.sampleRates.at(VersionIndex(row[0])).at(Index(row[1])) = Number(row[2]);
    });
}

void LoadBands(Tables& tables) {
    ForEachRow("scalefactor_bands.csv", 4, [&](const Row& row) {
        const std::size_t version = VersionIndex(row[0]);
        for (std::size_t rate = 0; rate < 3; ++rate) {
            if (tables.sampleRates[version][rate] != Number(row[1]))
                continue;
            BandStarts& starts = tables.bands[version][rate];
            (row[2] == "long" ? starts.longStarts : starts.shortStarts) = Numbers(row[3]);
        }
    });
}

void LoadLayer3(Tables& tables) {
    ForEachRow("slen.csv", 3, [&](const Row& row) {
        tables.scaleFactorLengths.at(Index(row[0])) = {Number(row[1]), Number(row[2])};
    });
    ForEachRow("lsf_partition.csv", 6, [&](const Row& row) {
        const std::size_t kind = row[1] == "long" ? 0 : row[1] == "short" ? 1 : 2;
        tables.partitions.at(Index(row[0])).at(kind) = {Number(row[2]), Number(row[3]), Number(row[4]),
                                                        Number(row[5])};
    });
    ForEachRow("pretab.csv", 2,
               [&](const Row& row) { tables.preemphasis.at(Index(row[0])) = Number(row[1]); });
    ForEachRow("alias_coefficients.csv", 4, [&](const Row& row) {
        tables.aliasCs.at(Index(row[0])) = std::stod(row[2]);
        tables.aliasCa.at(Index(row[0])) = std::stod(row[3]);
    });
}

void LoadLayer2(Tables& tables) {
    ForEachRow("layer2_quantisation.csv", 5, [&](const Row& row) {
        const QuantisationClass entry{Number(row[1]), row[2] == "1", Number(row[3])};
        tables.classes.at(Index(row[0])) = entry;
        tables.quantisation[entry.levels] = entry;
    });
    ForEachRow("layer2_allocation.csv", 4, [&](const Row& row) {
        tables.allocation[row[0]].push_back({Number(row[2]), Numbers(row[3])});
    });
    ForEachRow("layer2_table_choice.csv", 6, [&](const Row& row) {
        tables.allocationChoice[{Number(row[0]), Number(row[1]), Number(row[2]), Number(row[3])}] = row[5];
    });
}

Tables Load() {
    Tables tables;
    LoadHuffman(tables);
    LoadRates(tables);
    LoadBands(tables);
    LoadLayer3(tables);
    LoadLayer2(tables);
    ForEachRow("synthesis_window.csv", 3,
               [&](const Row& row) { tables.window.at(Index(row[0])) = Number(row[1]) / 65536.0; });
    return tables;
}

} // namespace

const Tables& StandardTables() {
    static const Tables tables = Load();
    return tables;
}

} // namespace test::model
