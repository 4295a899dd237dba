// The benchmark's data: rows shaped like view_contab_det, generated from a
// fixed seed, so every run measures the same rows.

#include "bench/grid/u_benchgrid.h"

#include <QDate>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

namespace {

using db::FieldType;

class GeneratedSet : public db::DataSet {
public:
    GeneratedSet()
    {
        setFields({
            {QStringLiteral("aplicatie"), FieldType::Text},          {QStringLiteral("jurnal"), FieldType::Text},
            {QStringLiteral("explicatie"), FieldType::Text},         {QStringLiteral("conts"), FieldType::Text},
            {QStringLiteral("conta"), FieldType::Text},              {QStringLiteral("conts_coresp"), FieldType::Text},
            {QStringLiteral("conta_coresp"), FieldType::Text},       {QStringLiteral("moneda"), FieldType::Text},
            {QStringLiteral("moneda_coresp"), FieldType::Text},      {QStringLiteral("data_doc"), FieldType::Date},
            {QStringLiteral("tip_doc"), FieldType::String, 7},       {QStringLiteral("nr_doc"), FieldType::Text},
            {QStringLiteral("scv"), FieldType::Int32},               {QStringLiteral("articol"), FieldType::Text},
            {QStringLiteral("detaliu_articol"), FieldType::Text},    {QStringLiteral("partener"), FieldType::Text},
            {QStringLiteral("valoare"), FieldType::Float},           {QStringLiteral("valoare_lei"), FieldType::Float},
            {QStringLiteral("valoare_coresp"), FieldType::Float},    {QStringLiteral("imp_taxa"), FieldType::String, 50},
            {QStringLiteral("activitate"), FieldType::String, 50},   {QStringLiteral("lot"), FieldType::String, 20},
            {QStringLiteral("magazie_sursa"), FieldType::String, 5}, {QStringLiteral("da_nu_contare"), FieldType::Bool},
            {QStringLiteral("da_nu_in_postcalcul"), FieldType::Bool}, {QStringLiteral("com_int"), FieldType::Text},
            {QStringLiteral("loc"), FieldType::Text},                {QStringLiteral("gr_chelt_ven_postc"), FieldType::Text},
            {QStringLiteral("nr_obiect"), FieldType::String, 20},    {QStringLiteral("casa"), FieldType::String, 50},
            {QStringLiteral("banca_eu"), FieldType::Text},           {QStringLiteral("cont_banca_eu"), FieldType::Text},
            {QStringLiteral("deb_cred"), FieldType::Text},           {QStringLiteral("reprezentind"), FieldType::Text},
            {QStringLiteral("eu_punct_lucru"), FieldType::String, 50}, {QStringLiteral("eu_punct_lucru_coresp"), FieldType::String, 50},
            {QStringLiteral("partener_punct_lucru"), FieldType::Text}, {QStringLiteral("eroare1"), FieldType::Text},
            {QStringLiteral("eroare2"), FieldType::Text},            {QStringLiteral("eroare3"), FieldType::Text},
            {QStringLiteral("data_contare"), FieldType::Date},       {QStringLiteral("eu_punct_lucru_procesare"), FieldType::String, 50},
            {QStringLiteral("data_incep"), FieldType::Date},         {QStringLiteral("data_sf"), FieldType::Date},
        });
    }

    void generate(qsizetype rows)
    {
        std::mt19937_64 rng(20240131);
        auto pick = [&](size_t n) { return size_t(rng() % n); };
        // skewed pick: a few values carry most rows, as in real ledgers
        auto skew = [&](size_t n) {
            const double u = double(rng() % 1000000) / 1000000.0;
            return std::min(n - 1, size_t(double(n) * u * u));
        };
        auto pool = [&](size_t n, auto make) {
            std::vector<std::string> out;
            out.reserve(n);
            char buf[160];
            for (size_t i = 0; i < n; ++i) {
                make(buf, sizeof buf, i);
                out.emplace_back(buf);
            }
            return out;
        };
        static const char *firms[] = {"Alfa", "Beta", "Carpați", "Dunărea", "Ştefănescu", "Ţiriac", "Mureș", "Brașov",
                                      "Oltenia", "Transilvania", "Moldova", "Banat", "Crișana", "Argeș", "Siret"};
        static const char *kinds[] = {"SRL", "SA", "PFA", "II", "SCS"};
        static const char *words[] = {"factura", "plata", "incasare", "avans", "transport", "chirie", "marfa",
                                      "servicii", "energie", "salarii", "taxe", "consumabile", "reparații", "ştampile"};
        const auto aplicatie = pool(8, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "APL%zu", i); });
        const auto jurnal = pool(30, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "Jurnal %02zu", i); });
        const auto explicatie = pool(60000, [&](char *b, size_t n, size_t i) {
            std::snprintf(b, n, "%s %s nr %zu", words[i % 14], firms[(i / 14) % 15], i);
        });
        const auto conts = pool(150, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "%zu", 101 + i * 47 % 900); });
        const auto conta = pool(3000, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "%zu.%05zu", 101 + i % 150 * 47 % 900, i); });
        const auto moneda = pool(4, [](char *b, size_t n, size_t i) { static const char *const names[] = {"RON", "EUR", "USD", "GBP"}; std::snprintf(b, n, "%s", names[i]); });
        const auto tipDoc = pool(10, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "TD%zu", i); });
        const auto articol = pool(500, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "Articol %zu", i); });
        const auto detaliu = pool(2000, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "Detaliu articol %zu", i); });
        const auto partener = pool(20000, [&](char *b, size_t n, size_t i) {
            std::snprintf(b, n, "%s %s %zu %s", firms[i % 15], words[(i / 15) % 14], i, kinds[i % 5]);
        });
        const auto small10 = pool(10, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "Valoare %zu", i); });
        const auto activ = pool(50, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "Activitate %zu", i); });
        const auto lot = pool(1000, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "L%06zu", i); });
        const auto mag = pool(20, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "M%02zu", i); });
        const auto comInt = pool(2000, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "CMD-%zu", i); });
        const auto loc = pool(100, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "Loc %zu", i); });
        const auto grChelt = pool(40, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "Grupa cheltuieli %zu", i); });
        const auto nrObiect = pool(500, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "OB%zu", i); });
        const auto banca = pool(5, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "Banca %zu", i); });
        const auto contBanca = pool(10, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "RO%02zuBANK%016zu", i, i * 7919); });
        const auto repr = pool(300, [&](char *b, size_t n, size_t i) { std::snprintf(b, n, "Reprezentând %s %zu", words[i % 14], i); });
        const auto ppl = pool(1000, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "Punct lucru partener %zu", i); });
        const auto eroare = pool(20, [](char *b, size_t n, size_t i) { std::snprintf(b, n, "Eroare de contare %zu", i); });

        const qint64 jan1 = QDate(2024, 1, 1).toJulianDay();
        std::vector<db::Column> &cols = mutableColumns();
        for (db::Column &c : cols)
            c.reserve(rows);
        auto text = [&](int f, const std::string &s) { cols[size_t(f)].appendBytes(s.data(), qsizetype(s.size())); };
        for (qsizetype r = 0; r < rows; ++r) {
            const qint64 docNo = r / 4;
            int f = 0;
            text(f++, aplicatie[skew(aplicatie.size())]);
            text(f++, jurnal[pick(jurnal.size())]);
            text(f++, explicatie[skew(explicatie.size())]);
            const size_t ca = skew(conta.size()), cb = skew(conta.size());
            text(f++, conts[ca % 150]);
            text(f++, conta[ca]);
            text(f++, conts[cb % 150]);
            text(f++, conta[cb]);
            text(f++, moneda[skew(4)]);
            text(f++, moneda[skew(4)]);
            cols[size_t(f++)].appendInt64(jan1 + qint64(docNo * 366 / (rows / 4 + 1)));
            text(f++, tipDoc[size_t(docNo % 10)]);
            char nr[32];
            std::snprintf(nr, sizeof nr, "%lld", static_cast<long long>(100000 + docNo));
            cols[size_t(f++)].appendBytes(nr, qsizetype(std::strlen(nr)));
            cols[size_t(f++)].appendInt64(1 + r % 4);
            text(f++, articol[skew(articol.size())]);
            text(f++, detaliu[skew(detaliu.size())]);
            text(f++, partener[skew(partener.size())]);
            const double cents = double(qint64(rng() % 20000000) - 2000000);
            cols[size_t(f++)].appendDouble(cents / 100.0);
            cols[size_t(f++)].appendDouble(cents * 4.97 / 100.0);
            cols[size_t(f++)].appendDouble(cents / 100.0);
            text(f++, small10[pick(10)]);
            text(f++, activ[pick(activ.size())]);
            text(f++, lot[pick(lot.size())]);
            text(f++, mag[pick(mag.size())]);
            cols[size_t(f++)].appendInt64(qint64(rng() % 10 != 0));
            cols[size_t(f++)].appendInt64(qint64(rng() % 3 == 0));
            text(f++, comInt[skew(comInt.size())]);
            text(f++, loc[pick(loc.size())]);
            text(f++, grChelt[pick(grChelt.size())]);
            text(f++, nrObiect[pick(nrObiect.size())]);
            text(f++, small10[pick(10)]);
            text(f++, banca[pick(banca.size())]);
            text(f++, contBanca[pick(contBanca.size())]);
            text(f++, std::string(r % 2 ? "C" : "D"));
            text(f++, repr[pick(repr.size())]);
            text(f++, small10[pick(10)]);
            text(f++, small10[pick(10)]);
            text(f++, ppl[pick(ppl.size())]);
            for (int e = 0; e < 3; ++e) {
                if (rng() % 20 == 0)
                    text(f++, eroare[pick(eroare.size())]);
                else
                    cols[size_t(f++)].appendNull();
            }
            cols[size_t(f++)].appendInt64(jan1 + qint64(docNo * 366 / (rows / 4 + 1)) + qint64(rng() % 5));
            text(f++, small10[pick(10)]);
            cols[size_t(f++)].appendInt64(jan1);
            cols[size_t(f++)].appendInt64(jan1 + 365);
        }
        setRowCount(rows);
        setActiveState(true);
        emit rowsReset();
    }
};

} // namespace

db::DataSet &BenchContext::dataSet()
{
    if (!m_ds) {
        const qsizetype rows = qEnvironmentVariableIsSet("QUARV_BENCH_GRID_ROWS")
            ? qEnvironmentVariable("QUARV_BENCH_GRID_ROWS").toLongLong()
            : 1000000;
        const qsizetype before = rssBytes();
        auto ds = std::make_unique<GeneratedSet>();
        ds->generate(rows);
        m_dsBytes = rssBytes() - before;
        m_ds = std::move(ds);
        std::fprintf(stderr, "bench_grid: %lld rows x %d columns, %.1f MiB resident\n",
                     static_cast<long long>(rows), m_ds->fieldCount(), double(m_dsBytes) / 1048576.0);
    }
    return *m_ds;
}

qsizetype BenchContext::datasetBytes()
{
    dataSet();
    return m_dsBytes;
}
