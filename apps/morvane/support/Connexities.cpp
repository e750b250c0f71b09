#include "morvane/support/Connexities.h"

#include <string>
#include <utility>
#include <vector>

namespace program
{

namespace
{

using namespace morvane::connexity;

std::vector<std::pair<std::string, eConnexityType>> const & Names()
{
    static std::vector<std::pair<std::string, eConnexityType>> const names = {
        {"4", eConnexity4},
        {"4-wrapped", eConnexity4Wrapped},
        {"8", eConnexity8},
        {"8-axes-first", eConnexity8AxesFirst},
        {"8-wrapped", eConnexity8Wrapped},
        {"12", eConnexity12},
        {"20", eConnexity20},
        {"12-interleaved", eConnexity12Interleaved},
        {"12-interleaved-wrapped", eConnexity12InterleavedWrapped},
        {"20-interleaved", eConnexity20Interleaved},
        {"20-interleaved-wrapped", eConnexity20InterleavedWrapped},
        {"24-interleaved", eConnexity24Interleaved},
        {"24-interleaved-wrapped", eConnexity24InterleavedWrapped},
    };
    return names;
}

std::string AllNames()
{
    std::string all;
    for (auto const & [name, connexity] : Names())
    {
        all += (all.empty() ? "" : ", ") + name;
    }
    return all;
}

eConnexityType ConnexityCalled(std::string const & wanted)
{
    for (auto const & [name, connexity] : Names())
    {
        if (name == wanted) return connexity;
    }
    throw CLI::ValidationError("--connexity", wanted + " is none of " + AllNames());
}

/// Declares the option; @p connexity is whatever takes one.
template <class Taker>
CLI::Option * Declare(CLI::App & arguments, Taker & connexity, std::string const & use)
{
    auto const take = [&connexity](std::string const & wanted) {
        connexity = ConnexityCalled(wanted);
    };
    return arguments
        .add_option_function<std::string>(
            "--connexity", take, use + ": " + AllNames() + "; wrapped ones join the first and last column")
        ->type_name("NAME");
}

} // namespace

void DeclareConnexity(CLI::App & arguments, eConnexityType & connexity)
{
    Declare(arguments, connexity, "the neighbourhood")->required();
}

CLI::Option * DeclareConnexity(CLI::App & arguments, std::optional<eConnexityType> & connexity, std::string const & use)
{
    return Declare(arguments, connexity, use);
}

} // namespace program
