#include "Page.h"

#include <fstream>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace gallery
{

namespace
{

constexpr char const * kStyle = R"(
:root { --paper: #fbfaf7; --ink: #22252a; --soft: #6a707a; --line: #e2dfd7; --card: #ffffff; --accent: #2a6f6b; --code: #f1efe9; }
@media (prefers-color-scheme: dark) {
  :root { --paper: #16181b; --ink: #e6e4df; --soft: #9aa0a8; --line: #2c3036; --card: #1d2024; --accent: #7cc4bd; --code: #24282d; }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--paper); color: var(--ink);
  font: 17px/1.55 system-ui, "Segoe UI", "DejaVu Sans", sans-serif; }
main { max-width: 1180px; margin: 0 auto; padding: 3rem 1.5rem 5rem; }
h1 { font-size: clamp(2rem, 5vw, 3rem); line-height: 1.1; margin: 0 0 .8rem; letter-spacing: -.02em; }
h2 { font-size: 1.7rem; margin: 4rem 0 .5rem; padding-top: 1.2rem; border-top: 2px solid var(--accent); }
h3 { font-size: 1.2rem; margin: 0 0 .4rem; }
p { max-width: 46rem; margin: .4rem 0 1rem; }
.lead { font-size: 1.15rem; color: var(--soft); }
nav ol { display: flex; flex-wrap: wrap; gap: .4rem 1.4rem; list-style: none; padding: 0; margin: 1.5rem 0 0; }
a { color: var(--accent); }
.figures { display: grid; align-items: start; gap: 1.2rem; grid-template-columns: repeat(auto-fit, minmax(min(100%, 24rem), 1fr)); margin: 1rem 0; }
figure { margin: 0; background: var(--card); border: 1px solid var(--line); border-radius: 10px; overflow: hidden; }
figure img { display: block; width: 100%; max-height: 34rem; object-fit: contain; background: #1e2026; }
figcaption { padding: .6rem .9rem .8rem; font-size: .92rem; color: var(--soft); }
article { margin: 2.4rem 0 0; }
pre { background: var(--code); border-radius: 8px; padding: .8rem 1rem; overflow: auto; max-height: 24rem; margin: .6rem 0;
  font: .88rem/1.5 ui-monospace, "DejaVu Sans Mono", monospace; }
.command { white-space: pre-wrap; }
.command::before { content: "$ "; color: var(--soft); }
.time { color: var(--soft); font-size: .9rem; margin: .2rem 0 0; }
)";

std::string Anchor(std::size_t section)
{
    return "section-" + std::to_string(section);
}

} // namespace

std::string Escape(std::string const & text)
{
    std::string escaped;
    for (char const letter : text)
    {
        switch (letter)
        {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += letter;
        }
    }
    return escaped;
}

Page::Page(std::string title, std::string introduction)
    : m_title(std::move(title))
    , m_introduction(std::move(introduction))
{}

void Page::BeginSection(std::string const & title, std::string const & text)
{
    m_contents.push_back(title);
    m_body += "<h2 id=\"" + Anchor(m_contents.size()) + "\">" + Escape(title) + "</h2>\n<p>" + Escape(text) + "</p>\n";
}

void Page::AddFigures(std::vector<Figure> const & figures)
{
    m_body += "<div class=\"figures\">\n";
    for (Figure const & figure : figures)
    {
        std::string const picture = Escape(figure.picture.string());
        std::string const caption = Escape(figure.caption);
        m_body += "<figure><a href=\"" + picture + "\"><img src=\"" + picture + "\" alt=\"" + caption +
                  "\"></a><figcaption>" + caption + "</figcaption></figure>\n";
    }
    m_body += "</div>\n";
}

void Page::AddStep(
    std::string const & title, std::string const & text, std::string const & command,
    std::vector<Figure> const & figures, std::string const & output, double seconds)
{
    std::ostringstream time;
    time << std::fixed << std::setprecision(0) << seconds * 1000.0 << " ms, with reading and writing the files";
    m_body += "<article>\n<h3>" + Escape(title) + "</h3>\n<p>" + Escape(text) + "</p>\n<pre class=\"command\">" +
              Escape(command) + "</pre>\n";
    AddFigures(figures);
    m_body += "<pre>" + Escape(output) + "</pre>\n<p class=\"time\">" + time.str() + "</p>\n</article>\n";
}

void Page::Write(std::filesystem::path const & file) const
{
    std::ofstream stream(file);
    stream << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           << "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" << Escape(m_title)
           << "</title>\n<style>" << kStyle << "</style>\n</head>\n<body>\n<main>\n<h1>" << Escape(m_title)
           << "</h1>\n<p class=\"lead\">" << Escape(m_introduction) << "</p>\n<nav><ol>\n";
    for (std::size_t section = 1; section <= m_contents.size(); ++section)
    {
        stream << "<li><a href=\"#" << Anchor(section) << "\">" << Escape(m_contents[section - 1]) << "</a></li>\n";
    }
    stream << "</ol></nav>\n" << m_body << "</main>\n</body>\n</html>\n";
    stream.close();
    if (!stream) throw std::runtime_error(file.string() + ": cannot be written");
}

} // namespace gallery
