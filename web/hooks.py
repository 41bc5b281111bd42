"""What the pages need beyond Markdown: colours, an order, anchors for rows of tables, and a search that works from files."""
import html
import json
import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import lexers  # noqa: E402  pylint: disable=wrong-import-position

# What is named comes first, in this order; any other page is found by itself and stands at the end of its group.
GROUPS = [("Begin", "README.md", "docs/language.md", "docs/recipes.md", "docs/traps.md", "docs/traps-values.md",
           "docs/traps-words.md", "docs/traps-texts.md", "docs/traps-functions.md"),
          ("Look up", "docs/words.md", "docs/messages.md", "docs/library.md", "docs/numbers.md", "docs/arrays.md",
            "docs/files.md", "docs/limits.md"),
          ("Use", "docs/prompt.md", "docs/scripts.md", "docs/measuring.md", "docs/embedding.md", "editors/README.md",
           "packaging/README.md"),
          ("Know", "docs/behaviour.md", "docs/reliability.md", "docs/performance.md", "CHANGELOG.md", "SECURITY.md"),
          ("Change", "CONTRIBUTING.md", "docs/architecture.md", "docs/changing.md", "tests/README.md")]
REST = "Look up"
SHOWN = (".c", ".cpp", ".morvik")  # sources that pages link to: pages of their own, which are in no list
FENCE = re.compile(r"^```(morvik|script|shell)\b.*$", re.M)
LANGUAGES = {"morvik": "morvik-session", "script": "morvik", "shell": "console"}
SPELLED = re.compile(r'<h3 id="([^"]*)">[^\n]*</h3>\n<p>((?:<code>[^<]*</code>(?: |&nbsp;)*)+)</p>')
ROW = re.compile(r"<tr>\n<td>((?:<code>.*?</code>[ ,;]*)+)</td>(.*?)</tr>", re.S)


built = {}  # pages by their places in the site
rows = []  # of their tables, to be searched for
spellings = {}  # by place: what else a heading is called, as the line of code below it says


def slug(text, separator):
    """The anchor of a heading, as the places where people read the pages in the tree make it."""
    return re.sub(r"[^\w\- ]", "", html.unescape(re.sub(r"<[^>]*>", "", text)).strip().lower()).replace(" ", separator)


def on_config(config):
    lexers.register()
    config["mdx_configs"].setdefault("toc", {})["slugify"] = slug
    return config


def on_files(files, config):
    pages = [file.src_uri for file in files.documentation_pages() if not pathlib.PurePath(file.src_uri).stem.endswith(SHOWN)]
    named = {name for _, *names in GROUPS for name in names}
    rest = sorted(set(pages) - named)
    config["nav"] = [{title: [name for name in names if name in pages] + (rest if title == REST else [])}
                     for title, *names in GROUPS]
    return files


def on_page_markdown(markdown, page, **_):
    if page.file.src_uri.removesuffix(".md").endswith(SHOWN):
        return markdown  # a source, which has fences of no one's
    return FENCE.sub(lambda match: "```" + LANGUAGES[match.group(1)], markdown)


def plain(text):
    return re.sub(r" (?=[,;.])", "", " ".join(html.unescape(re.sub(r"<[^>]*>", " ", text)).split()))


def entry(location, title, text, page):
    group = next((number for number, (_, *names) in enumerate(GROUPS) if page.file.src_uri in names), 1)
    return {"location": location, "title": title, "text": text, "page": plain(page.title), "weight": 10 * (len(GROUPS) - group)}


def on_page_content(text, page, **_):
    """Rows of a table that begin with code can be led to, and searched for; so can words by any spelling."""
    spellings.update({page.url + "#" + match.group(1): plain(match.group(2)) for match in SPELLED.finditer(text)})
    taken = set(re.findall(r'id="([^"]*)"', text))
    built[page.url] = page

    def anchored(match):
        names = plain(match.group(1))
        anchor = "row-" + re.sub(r"[^A-Za-z0-9]", lambda one: "%x" % ord(one.group()), names.split()[0])
        while anchor in taken:
            anchor += "-"
        taken.add(anchor)
        rows.append(entry(page.url + "#" + anchor, names, plain(match.group(2)), page))
        return '<tr id="%s">' % anchor + match.group(0).removeprefix("<tr>")

    return ROW.sub(anchored, text)


def spelled(title, location):
    return " ".join(dict.fromkeys([title, *spellings.get(location, "").split()]))


def on_post_build(config):
    """The index as a script: a page from a file may run one, but fetch nothing."""
    site = pathlib.Path(config["site_dir"])
    entries = json.loads((site / "search" / "search_index.json").read_text(encoding="utf-8"))["docs"]
    sections = [entry(one["location"], spelled(html.unescape(one["title"]), one["location"]), html.unescape(one["text"]),
                      built[one["location"].split("#")[0]]) for one in entries if "#" in one["location"]]
    (site / "search" / "index.js").write_text("searchIndex = %s;\n" % json.dumps(sections + rows, ensure_ascii=False), encoding="utf-8")
    # What would ask for the index over a network, and what needs to know where the site is.
    for path in [*(site / "search").iterdir(), *site.glob("sitemap.xml*")]:
        if path.name != "index.js":
            path.unlink()
