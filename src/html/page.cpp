#include "html/page.h"

#include "html/data.h"
#include "html/embedded.h"
#include "html/findings.h"
#include "html/head.h"
#include "html/markup.h"
#include "html/tables.h"

namespace quarl::html
{

namespace
{

void write_policy(Markup &page)
{
    page.put("<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
             "script-src '");
    page.text(Drawing.hash);
    page.put("' '");
    page.text(Script.hash);
    page.put("'; style-src '");
    page.text(Style.hash);
    page.put("'; base-uri 'none'; form-action 'none'\">\n");
}

void write_script(Markup &page, const Embedded &script)
{
    page.put("<script>");
    page.embed(script.text);
    page.put("</script>\n");
}

void write_top(Markup &page, const VolumeRead &volume)
{
    page.put("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n");
    write_policy(page);
    page.put("<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>");
    page.path(title_of(volume));
    page.put(" – ");
    page.text(volume.program);
    page.put("</title>\n<style>");
    page.embed(Style.text);
    page.put("</style>\n");
    write_script(page, Drawing);
    page.put("</head>\n<body>\n");
}

void write_nav(Markup &page)
{
    page.put(
        "<nav id=\"nav\" aria-label=\"Parts of the page\"><a href=\"#findings\">Findings</a> "
        "<a href=\"#map\">Map</a> <a href=\"#timeline\">Timeline</a> <a href=\"#data\">Data</a> "
        "<a href=\"#responses\">Responses</a> <a href=\"#site\">Station</a> "
        "<a href=\"#tables\">Tables</a></nav>\n<main>\n");
}

/// Sections that the script fills.
void write_views(Markup &page)
{
    page.put(
        "<section id=\"map\"><h2>Map</h2><div id=\"map-view\"></div></section>\n"
        "<section id=\"timeline\"><h2>Timeline</h2><div id=\"timeline-view\"></div></section>\n"
        "<section id=\"data\"><h2>Data</h2><div id=\"data-view\"></div></section>\n"
        "<section id=\"responses\"><h2>Responses</h2>"
        "<div id=\"responses-view\"></div></section>\n"
        "<section id=\"site\"><h2>Station</h2><div id=\"site-view\"></div></section>\n"
        "<noscript><p>Map, timeline, data and curves are drawn by scripts.</p></noscript>\n");
}

} // namespace

void write_page(Out &out, const VolumeRead &volume)
{
    const std::vector<PageChannel> channels = page_channels(volume);
    const Targets targets(volume.inventory, channels);
    Curves curves(volume);
    Markup page(out);
    write_top(page, volume);
    write_head(page, volume, channels);
    write_nav(page);
    write_findings(page, volume, targets);
    write_views(page);
    write_tables(page, volume, channels, curves);
    page.put("</main>\n<script type=\"application/json\" id=\"volume\">");
    write_data(out, volume, channels, targets, &curves);
    page.put("</script>\n");
    write_script(page, Script);
    page.put("</body>\n</html>\n");
}

} // namespace quarl::html
