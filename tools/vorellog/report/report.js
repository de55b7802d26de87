/*
 * Shows the data of the page. Text from the log becomes the text of an element or the value of a field, never markup.
 */
(() => {
    "use strict";
    const data = JSON.parse(document.getElementById("data").textContent);
    const byId = (id) => document.getElementById(id);
    const groups = data.groups || [];
    const processes = data.processes || [];
    const prefixes = data.prefixes || [];
    const step = data.stepSeconds * 1000;
    const kFirstRows = 50;
    const kMoreRows = 200;
    const shown = { groups: kFirstRows, processes: kFirstRows };
    const number = new Intl.NumberFormat("en");

    const element = (name, className, text) => {
        const made = document.createElement(name);
        if (className) {
            made.className = className;
        }
        if (text !== undefined) {
            made.textContent = text;
        }
        return made;
    };
    // The log has local times without a zone. They are handled as if they were UTC.
    const timeText = (ms) => new Date(ms).toISOString().slice(0, 19).replace("T", " ");
    const fieldTime = (id) => {
        const value = byId(id).value;
        return value ? Date.parse(value + "Z") : NaN;
    };
    const counted = (count, one, many) => number.format(count) + " " + (count === 1 ? one : many || one + "s");
    const colour = (name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();
    const isError = (prefix) => prefix === "Vorel Error" || prefix === "AddHRESULTErrorToStack";

    /* ---- Filters ---- */

    const filter = { text: "", process: -1, from: -Infinity, to: Infinity };

    const readFilters = () => {
        filter.text = byId("text").value.toLowerCase();
        const name = byId("process").value.trim();
        filter.process = name ? processes.findIndex((each) => each.name === name) : -1;
        filter.unknownProcess = name !== "" && filter.process < 0;
        const from = fieldTime("from");
        const to = fieldTime("to");
        filter.from = Number.isNaN(from) ? -Infinity : from;
        filter.to = Number.isNaN(to) ? Infinity : to;
    };

    /* The data has counts only for whole steps, so all entries of each step that overlaps the period are counted. */
    const entriesIn = (group) => {
        if (filter.from === -Infinity && filter.to === Infinity) {
            return group.entries;
        }
        let entries = 0;
        for (let at = 0; at < group.steps.length; at += 2) {
            const start = data.start + group.steps[at] * step;
            entries += start + step > filter.from && start <= filter.to ? group.steps[at + 1] : 0;
        }
        return entries;
    };

    const textOf = (group) => {
        group.text = group.text || [group.prefix + ": " + group.message, ...group.trail.map((each) => each.text),
            ...group.examples.flatMap((each) => [each.writer, ...each.messages.map((one) => one.text)])]
            .join("\n").toLowerCase();
        return group.text;
    };

    const selectedGroups = () => groups
        .filter((group) => !filter.unknownProcess && (filter.process < 0 || group.processes.includes(filter.process)))
        .filter((group) => textOf(group).includes(filter.text))
        .map((group) => ({ group, entries: entriesIn(group) }))
        .filter((each) => each.entries !== 0)
        .sort((a, b) => b.entries - a.entries || b.group.last - a.group.last);

    /* ---- Charts ---- */

    const times = Array.from({ length: data.stepCount || 0 }, (_, index) => ((data.start || 0) + index * step) / 1000);

    const countsOf = (pairs) => {
        const counts = new Array(times.length).fill(0);
        for (let at = 0; at < pairs.length; at += 2) {
            counts[pairs[at]] = pairs[at + 1];
        }
        return counts;
    };

    const kPalette = ["#d1495b", "#e08e29", "#6c8ebf", "#2e9e6b", "#9b6fc0", "#0e9aa7", "#b5651d", "#8a8f98", "#c2b280"];
    const colourOf = (prefix, index) => isError(prefix) ? kPalette[0] : prefix === "WARN" ? kPalette[1]
        : prefix === "DEBUG" ? kPalette[7] : kPalette[2 + index % 5];

    const fromZero = (_, min, max) => [0, Math.max(max * 1.05, 1)];

    const asUtc = (seconds) => uPlot.tzDate(new Date(seconds * 1000), "Etc/UTC");

    let chart = null;

    const drawTimeline = () => {
        const place = byId("timeline");
        place.replaceChildren();
        if (times.length === 0) {
            return;
        }
        // The series are stacked: each series is drawn as the sum of itself and all series below it. The highest sum is
        // drawn first, so that the lower sums cover the lower part of its area.
        const sums = [];
        prefixes.forEach((prefix, index) => {
            const counts = countsOf(prefix.steps);
            sums.push(counts.map((count, at) => count + (index === 0 ? 0 : sums[index - 1][at])));
        });
        const series = prefixes.map((prefix, index) => ({
            label: prefix.name || "(no prefix)",
            stroke: colourOf(prefix.name, index),
            fill: colourOf(prefix.name, index),
            width: 0,
            points: { show: false },
            paths: uPlot.paths.stepped({ align: 1 }),
            value: (_, sum, __, at) => at === null || at === undefined ? "" : number.format(countsOf(prefix.steps)[at]),
        }));
        const axis = { stroke: colour("--dim"), grid: { stroke: colour("--line"), width: 1 }, ticks: { stroke: colour("--line") } };
        const last = times[times.length - 1] + step / 1000;
        chart = new uPlot({
            width: place.clientWidth || 600,
            height: 220,
            tzDate: asUtc,
            padding: [null, 24, null, null],
            scales: { x: { time: true, range: (_, min, max) => min === max ? [min - 1, max + 1] : [min, max] },
                y: { range: fromZero } },
            series: [{ label: "Time", value: (_, seconds) => seconds === null ? "" : timeText(seconds * 1000) },
                ...series.slice().reverse()],
            axes: [{ ...axis, values: clockTexts }, { ...axis, size: 60, values: (_, values) => values.map((each) => number.format(each)) }],
            cursor: { drag: { x: true, y: false, setScale: false } },
            hooks: { setSelect: [onSelect] },
        }, [[...times, last], ...sums.slice().reverse().map((each) => [...each, each[each.length - 1]])], place);
        showPeriod();
    };

    /* The labels of the time axis: the first label has the date below the time, and a label at midnight is a date. */
    const clockTexts = (_, values) => values.map((each, index) => {
        const text = timeText(each * 1000);
        const clock = text.slice(11, each % 60 === 0 ? 16 : 19);
        return index === 0 ? clock + "\n" + text.slice(0, 10) : each % 86400 === 0 ? text.slice(5, 10) : clock;
    });

    const fieldText = (ms) => new Date(ms).toISOString().slice(0, 19);

    const onSelect = (u) => {
        if (u.select.width > 2) {
            byId("from").value = fieldText(Math.floor(u.posToVal(u.select.left, "x")) * 1000);
            byId("to").value = fieldText(Math.ceil(u.posToVal(u.select.left + u.select.width, "x")) * 1000);
            u.setSelect({ left: 0, top: 0, width: 0, height: 0 }, false);
            update();
        }
    };

    /* Shows the selected period in the timeline. */
    const showPeriod = () => {
        const min = Math.max(filter.from / 1000, times[0]);
        const max = Math.min(filter.to / 1000, times[times.length - 1] + step / 1000);
        if (chart && min < max) {
            chart.setScale("x", { min, max });
        }
    };

    const drawSpark = (place, group) => {
        place.replaceChildren();
        new uPlot({
            width: 144,
            height: 28,
            legend: { show: false },
            cursor: { show: false },
            padding: [2, 0, 0, 0],
            axes: [{ show: false }, { show: false }],
            scales: { x: { time: false }, y: { range: fromZero } },
            series: [{}, { stroke: colour("--accent"), fill: colour("--accent") + "55", width: 1, points: { show: false },
                paths: uPlot.paths.stepped({ align: 1 }) }],
        }, [times, countsOf(group.steps)], place);
    };

    /* Drawing a thousand canvases would take a second, so a chart is drawn when its group comes into view. */
    const observer = new IntersectionObserver((entries) => {
        for (const entry of entries) {
            if (entry.isIntersecting) {
                observer.unobserve(entry.target);
                drawSpark(entry.target, entry.target.group);
            }
        }
    }, { rootMargin: "200px" });

    /* ---- Lists ---- */

    const trailOf = (messages) => {
        const list = element("ul", "trail");
        for (const message of messages) {
            list.append(element("li", "", "> " + message.text));
        }
        return list;
    };

    const showExamples = (group, place) => {
        const list = element("ul", "examples");
        const fitting = group.examples.filter((each) => each.time >= filter.from && each.time <= filter.to &&
            (filter.process < 0 || each.writer.startsWith(processes[filter.process].name + ".")));
        for (const example of fitting) {
            const item = element("li", "", "[" + timeText(example.time) + "] " + example.writer + ": " +
                example.messages[0].text);
            if (example.messages.length > 1) {
                item.append(trailOf(example.messages.slice(1)));
            }
            list.append(item);
        }
        const hint = fitting.length === 0
            ? "The report has only the newest entries of a message. None of them is in this selection."
            : "The newest " + counted(fitting.length, "entry", "entries") + ":";
        place.append(element("p", "hint", hint), list);
    };

    const groupOf = ({ group, entries }) => {
        const details = element("details");
        const summary = element("summary");
        const count = element("span", "count", number.format(entries));
        count.setAttribute("aria-label", number.format(entries) + (entries === 1 ? " entry" : " entries"));
        const spark = element("span", "spark");
        spark.setAttribute("aria-hidden", "true");
        spark.group = group;
        observer.observe(spark);
        const message = element("span", "message");
        if (group.prefix) {
            message.append(element("span", isError(group.prefix) ? "prefix error" : "prefix", group.prefix + ": "));
        }
        message.append(element("span", "", group.message));
        if (group.trail.length !== 0) {
            message.append(trailOf(group.trail));
        }
        const when = element("span", "when", timeText(group.first) + " to " + timeText(group.last) + ", " +
            counted(group.processCount, "process", "processes"));
        summary.append(count, spark, message, when);
        details.append(summary);
        details.addEventListener("toggle", () => {
            if (details.open && details.children.length === 1) {
                showExamples(group, details);
            }
        });
        return details;
    };

    const laneOf = (process) => {
        const lane = element("div", "lane");
        const name = element("button", "", process.name);
        name.type = "button";
        name.title = "Show only this process";
        name.addEventListener("click", () => {
            byId("process").value = process.name;
            update();
            byId("process").focus();
        });
        const track = element("span", "track");
        track.setAttribute("role", "img");
        track.setAttribute("aria-label", timeText(process.first) + " to " + timeText(process.last));
        track.title = track.getAttribute("aria-label");
        const span = Math.max(data.last - data.first, 1);
        const bar = element("span");
        bar.style.left = Math.min((process.first - data.first) / span * 100, 99.5) + "%";
        bar.style.width = (process.last - process.first) / span * 100 + "%";
        track.append(bar);
        lane.append(name, track, element("span", "count", number.format(process.records)));
        return lane;
    };

    const showList = (id, items, make) => {
        byId(id).replaceChildren(...items.slice(0, shown[id]).map(make));
        byId("more-" + id).hidden = items.length <= shown[id];
    };

    const update = () => {
        readFilters();
        const selected = selectedGroups();
        showList("groups", selected, groupOf);
        const lanes = processes.filter((each, index) => !filter.unknownProcess &&
            (filter.process < 0 || index === filter.process) && each.last >= filter.from && each.first <= filter.to);
        showList("processes", lanes, laneOf);
        const entries = selected.reduce((sum, each) => sum + each.entries, 0);
        const period = filter.from === -Infinity && filter.to === Infinity ? "" : ", counted in whole steps of " +
            counted(data.stepSeconds || 0, "second");
        byId("status").textContent = counted(selected.length, "different message") + " with " +
            counted(entries, "entry", "entries") + ", " + counted(lanes.length, "process", "processes") + period;
        showPeriod();
    };

    /* ---- Start ---- */

    byId("name").textContent = data.name;
    document.title = data.name;
    const notes = [counted(data.records, "record")];
    if (data.records !== 0) {
        notes[0] += " from " + timeText(data.first) + " to " + timeText(data.last);
        notes.push("times are the local time of the log");
    }
    const damage = ["cut", "mid-line", "no header", "bad UTF-8"].filter((kind) => data[kind]);
    if (damage.length !== 0) {
        const damaged = damage.reduce((sum, kind) => sum + data[kind], 0);
        notes.push(counted(damaged, "damaged record") + ": " +
            damage.map((kind) => number.format(data[kind]) + " " + kind).join(", "));
    }
    if (data.groupCount > groups.length) {
        notes.push("the " + number.format(groups.length) + " most frequent of " + number.format(data.groupCount) + " messages");
    }
    if (data.processCount > processes.length) {
        notes.push("the " + number.format(processes.length) + " busiest of " + number.format(data.processCount) + " processes");
    }
    if (data.ungrouped) {
        notes.push(counted(data.ungrouped, "entry", "entries") + " not grouped: too many different messages");
    }
    byId("overview").textContent = notes.join("; ");
    byId("timeline-text").textContent = prefixes.map((each) => (each.name || "no prefix") + ": " + each.records).join(", ");
    byId("process-names").append(...processes.map((each) => {
        const option = element("option");
        option.value = each.name;
        return option;
    }));
    let waiting = 0;
    byId("filters").addEventListener("input", () => {
        clearTimeout(waiting);
        waiting = setTimeout(update, 150);
    });
    byId("filters").addEventListener("submit", (event) => event.preventDefault());
    byId("show-all").addEventListener("click", () => {
        byId("filters").reset();
        update();
    });
    for (const id of ["groups", "processes"]) {
        byId("more-" + id).addEventListener("click", () => {
            shown[id] += kMoreRows;
            update();
        });
    }
    update();
    drawTimeline();
    const redraw = () => {
        drawTimeline();
        document.querySelectorAll(".spark").forEach((each) => observer.observe(each));
    };
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", redraw);
    let width = innerWidth;
    addEventListener("resize", () => {
        if (innerWidth !== width) {
            width = innerWidth;
            redraw();
        }
    });
})();
