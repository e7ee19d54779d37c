#include "deflate.h"

#include "refusal.h"
#include "texts.h"

#include <qpdf/Pipeline.hh>
#include <qpdf/Pl_Flate.hh>
#include <qpdf/Pl_String.hh>

#include <exception>

namespace sign {

namespace {

Refusal damaged()
{
    return {trText("Sign", "it is damaged")};
}

class Bounded : public Pipeline
{
public:
    Bounded(std::string& data, std::size_t most) : Pipeline("inflated", nullptr), m_data(data), m_most(most)
    {
    }

    void write(const unsigned char* part, std::size_t size) override
    {
        if (size > m_most - m_data.size())
            throw Refusal{
                filled(trText("Sign", "it stands for more than %1 bytes"), {std::to_string(m_most)})};
        m_data.append(reinterpret_cast<const char*>(part), size);
    }
    void finish() override {}

private:
    std::string& m_data;
    const std::size_t m_most;
};

void pass(std::string_view bytes, Pl_Flate& through)
{
    through.write(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
    through.finish();
}

} // namespace

std::string deflated(std::string_view bytes)
{
    std::string result;
    Pl_String end("deflated", nullptr, result);
    Pl_Flate flate("deflate", &end, Pl_Flate::a_deflate);
    pass(bytes, flate);
    return result;
}

std::string inflated(std::string_view bytes, std::size_t most)
{
    std::string result;
    Bounded end(result, most);
    Pl_Flate flate("inflate", &end, Pl_Flate::a_inflate);
    flate.setWarnCallback([](const char*, int) { throw damaged(); });
    try {
        pass(bytes, flate);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        throw damaged();
    }
    return result;
}

} // namespace sign
