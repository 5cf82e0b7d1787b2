#!/usr/bin/env python3
"""Derives corpus files for cases no collected file shows, each from a real
table of the corpus (named in MANIFEST.tsv). Run once from this folder; the
outputs are committed."""
import csv, io

def rows(name):
    with open(name, newline='', encoding='utf-8') as f:
        return list(csv.reader(f))

def write(name, text, encoding='utf-8', newline='\n'):
    with open(name, 'wb') as f:
        f.write(text.replace('\n', newline).encode(encoding))

def join(rs, delim):
    return ''.join(delim.join(r) + '\n' for r in rs)

longley = rows('py-statsmodels__longley.csv')
mtcars = rows('r-vroom__mtcars-4.csv')
macro = rows('py-statsmodels__macrodata.csv')[:40]
stack = rows('py-statsmodels__stackloss.csv')
gap = rows('r-readr__mini-gapminder-africa.csv')
chick = rows('r-readr__chickens.csv')
grun = rows('py-statsmodels__grunfeld.csv')[:30]

def comma_decimal(r):
    return [c.replace('.', ',') if c.replace('.', '').replace('-', '').isdigit() else c for c in r]

# ; with decimal commas
write('derived__longley_semicolon_decimal_comma.csv', join([longley[0]] + [comma_decimal(r) for r in longley[1:]], ';'))
# ; with 1.234.567,8 numbers
def grouped_eu(v):
    i, _, f = v.partition('.')
    s = '{:,}'.format(int(i)).replace(',', '.')
    return s + (',' + f if f else '')
write('derived__macrodata_semicolon_thousands_dot.csv',
      join([macro[0][:4]] + [[r[0], r[1], grouped_eu(r[2]), grouped_eu(r[3])] for r in macro[1:]], ';'))
# tab with 1,234,567.8 numbers
def grouped_us(v):
    i, _, f = v.partition('.')
    return '{:,}'.format(int(i)) + ('.' + f if f else '')
write('derived__macrodata_tab_thousands_comma.tsv',
      join([macro[0][:4]] + [[r[0], r[1], grouped_us(r[2]), grouped_us(r[3])] for r in macro[1:]], '\t'))
# pipe
write('derived__mtcars_pipe.txt', join(mtcars, '|'))
# CR line ends
write('derived__gapminder_cr.csv', join(gap, ','), newline='\r')
# UTF-16LE with a byte-order mark, tab-separated
write('derived__grunfeld_utf16le.tsv', '\ufeff' + join(grun, '\t'), encoding='utf-16-le')
# UTF-16BE without a mark, comma-separated
write('derived__stackloss_utf16be.csv', join(stack, ','), encoding='utf-16-be')
# Latin-1: the ISO 3166 country table (tabs, comment lines)
with open('tzdata__iso3166.tab', encoding='utf-8') as f:
    iso = ''.join(l.replace('\u2019', "'") for l in f if not l.startswith('#') or l.isascii())
write('derived__iso3166_latin1.tab', iso, encoding='latin-1')
# ' quoting
out = io.StringIO()
csv.writer(out, quotechar="'", lineterminator='\n').writerows(chick)
write('derived__chickens_single_quote.csv', out.getvalue())
# backslash escapes
out = io.StringIO()
csv.writer(out, doublequote=False, escapechar='\\', quoting=csv.QUOTE_NONNUMERIC, lineterminator='\n').writerows(
    [chick[0]] + [r[:2] + [int(r[2])] + [r[3].replace('!', '! "Ha!"')] for r in chick[1:]])
write('derived__chickens_backslash.csv', out.getvalue())
# A title, metadata lines and a blank line above, footnotes below
write('derived__stackloss_preamble_footnotes.csv',
      'Stack loss of a plant oxidising ammonia\nSource: statsmodels datasets\nObservations: 21\n\n'
      + join(stack, ',') + '\nNote: stack loss is 10 times the percentage of ammonia lost.\n'
      'Note: airflow is the rate of operation.\n')
# Names over two lines (names, then units)
write('derived__longley_two_line_header.csv',
      join([longley[0], ['', 'persons', 'index', 'dollars', 'persons', 'persons', 'persons', 'year']] + longley[1:], ','))
# % comment lines above and within
write('derived__stackloss_percent_comments.txt',
      '% stack loss data\n% columns: loss airflow temperature acid\n' + join(stack[1:11], '\t') + '% second shift\n'
      + join(stack[11:], '\t'))
# // comment lines
write('derived__mtcars_slash_comments.csv', '// mtcars, 4 cylinders\n' + join(mtcars[:6], ',') + '// more below\n' + join(mtcars[6:], ','))
# Every row ends with a delimiter
write('derived__gapminder_trailing_semicolon.csv', ''.join(';'.join(r) + ';\n' for r in gap))
# A second table of another shape after a blank line
write('derived__grunfeld_second_table.csv', join(grun[:15], ',') + '\nfirm,count\nGeneral Motors,20\nUS Steel,20\n')
# A single column
write('derived__sunspots_one_column.txt', ''.join(r[1] + '\n' for r in rows('py-statsmodels__sunspots.csv')[:60]))
# Missing-value markers and ragged rows in a tab table
ragged = [r[:] for r in grun[:25]]
for i in (3, 7, 12):
    ragged[i][1] = 'NA'
ragged[9] = ragged[9][:4]
ragged[17] = ragged[17] + ['x']
write('derived__grunfeld_missing_ragged.tsv', join(ragged, '\t'))
# Fixed width without blanks between some columns (a number right after a name)
write('derived__gapminder_fixed.txt', ''.join('{:<14}{:>4}{:>8}{:>10}{:>13}\n'.format(*r) for r in gap))
