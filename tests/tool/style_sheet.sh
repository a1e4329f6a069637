#!/usr/bin/env bash
# Plays an exported style sheet in a browser, where there is one, and compares with the values of prm: style_sheet.sh PROGRAM
# At 50 times of each curve, no value is further off than what browsers keep of numbers.
set -euo pipefail
program=$(readlink -f -- "$1")
browser=$(command -v chromium || command -v chromium-browser || command -v google-chrome || true)
if [[ -z $browser ]]; then
    echo "no browser here: skipped"
    exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

cat >curves.prm <<'END'
a.ease.keyframes.append( BezierKey( 0, 0, 0.42, 0, 0.58, 1 ) )
a.ease.keyframes.append( BezierKey( 10, 5, 0.9, -0.8, 0.1, 1.9 ) )
a.ease.keyframes.append( Key( 30, -3, Constant ) )
a.ease.keyframes.append( Key( 36, 2, Linear ) )
a.ease.keyframes.append( BezierKey( 40, 2, 0.3, 2, 0.6, -1 ) )
a.ease.keyframes.append( BezierKey( 48, 2, 1, 0, 0, 1 ) )
a.ease.keyframes.append( Key( 60, 100, Linear ) )
none.keyframes.append( BezierKey( 24, 1, 0, 0.7, 0.2, 1 ) )
none.keyframes.append( Key( 49.5, 0, Linear ) )
END
"$program" export curves.prm -o curves.css --fps 24
frames=$(seq -s, 0.61 1.2 59.5)
"$program" eval curves.prm a none --frames "$frames" --csv >expected.csv

cat >page.html <<END
<link rel="stylesheet" href="curves.css"><p class="a-ease"></p><p class="_none"></p><pre></pre>
<script>
onload = () => {
    const rows = [$frames].map(frame => {
        const values = ["a-ease", "_none"].map(name => {
            const element = document.querySelector("." + name);
            const [animation] = element.getAnimations();
            animation.pause();
            animation.currentTime = frame / 24 * 1000;
            return getComputedStyle(element).getPropertyValue("--" + name);
        });
        return [frame, ...values].join(",");
    });
    document.querySelector("pre").textContent = rows.join("\n");
};
</script>
END
timeout 60 "$browser" --headless --no-sandbox --disable-gpu --user-data-dir="$work/profile" --virtual-time-budget=5000 \
    --allow-file-access-from-files --dump-dom "file://$work/page.html" 2>browser.log |
    sed -n '/<pre>/,/<\/pre>/p' | sed 's/.*<pre>//; s/<\/pre>.*//; /^$/d' >shown.csv || true
if [[ ! -s shown.csv ]]; then
    echo "the browser does not start here: skipped"
    exit 77
fi
paste -d, <(tail -n +2 expected.csv) shown.csv | awk -F, '
    { for (i = 2; i <= 3; i++) { off = $i - $(i + 3); if (off < 0) off = -off; if (off > most) most = off; count++ } }
    END { print count " values, at most " most " off"; exit !(count >= 100 && most < 1e-3) }'
