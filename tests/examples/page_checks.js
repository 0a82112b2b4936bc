"use strict";
// Uses the page by its own events and notes what came of it; see page_test.py.

const findings = [];
const check = (name, isRight, detail = "") => findings.push([name, Boolean(isRight), String(detail)]);

// A number for what the canvas shows.
function shown() {
  draw();
  const {data} = pen.getImageData(0, 0, canvas.width, canvas.height);
  let hash = 0;
  for (let i = 0; i < data.length; ++i) hash = Math.imul(hash ^ data[i], 16777619);
  return hash;
}
const pointer = (type, x, y, more = {}) => canvas.dispatchEvent(new PointerEvent(type,
  {pointerId: 1, clientX: x, clientY: y, bubbles: true, cancelable: true, ...more}));
const key = name => dispatchEvent(new KeyboardEvent("keydown", {key: name, cancelable: true}));
const panel = () => document.getElementById("record");

function clickAt(x, y) {
  draw();
  pointer("pointerdown", x, y);
  pointer("pointerup", x, y);
}

function checkCamera() {
  const before = shown(), {turn, tilt, distance, target} = camera;
  pointer("pointerdown", 300, 300);
  pointer("pointermove", 360, 320);
  pointer("pointerup", 360, 320);
  check("a drag orbits", camera.turn !== turn && camera.tilt !== tilt && shown() !== before);
  const turned = shown();
  canvas.dispatchEvent(new WheelEvent("wheel", {deltaY: -300, cancelable: true}));
  check("the wheel zooms", camera.distance < distance && shown() !== turned, camera.distance);
  pointer("pointerdown", 300, 300);
  pointer("pointermove", 330, 300, {shiftKey: true});
  pointer("pointerup", 330, 300);
  check("a shift-drag moves", camera.target.some((at, i) => at !== target[i]));
  check("and no click came of it", panel().hidden);
  Object.assign(camera, {turn, tilt, distance, target});
  check("the same camera shows the same", shown() === before);
}

function checkTime() {
  const first = shown();
  document.getElementById("forward").click();
  check("the button steps on", state.frame === 1 && shown() !== first);
  check("the clock follows", document.getElementById("clock").textContent.startsWith("frame 2 of 3"));
  key("ArrowRight");
  key("ArrowRight");
  check("the last frame is the end", state.frame === 2);
  key("ArrowLeft");
  check("the arrow steps back", state.frame === 1);
  const slider = document.getElementById("slider");
  check("the slider spans the frames", slider.max === "2" && slider.value === "1" || slider.max, slider.value);
  slider.value = "0";
  slider.dispatchEvent(new Event("input"));
  check("the slider leads back", state.frame === 0 && shown() === first);
  key(" ");
  check("space plays", state.playing);
  document.getElementById("play").click();
  check("the button stops", !state.playing);
  go(1);
  const trails = recordsOf(1), own = state.frames[1].lists[1].length;
  check("trails of the frame before stay", trails.length > own, `${trails.length} of ${own}`);
  check("and fade", trails.slice(own).every(({fade}) => fade > 0 && fade < 1));
  go(0);
}

function checkToggles() {
  const boxes = [...document.querySelectorAll("#toggles input")];
  const counts = [...document.querySelectorAll("#toggles b")].map(count => Number(count.textContent));
  check("each list has a toggle", boxes.length === 7);
  check("with the frame's count", counts.every((count, i) => count === state.frames[0].lists[i].length), counts);
  const before = shown();
  boxes.forEach((box, number) => {
    const {name} = LISTS[number];
    const had = state.items.filter(item => item.name === name).length;
    box.click();
    const off = shown();
    check(`${name} go off`, had > 0 && !state.items.some(item => item.name === name) && off !== before, had);
    box.click();
    check(`${name} come back`, shown() === before);
  });
}

// Clicks the middle of each of some lines until one is foremost there.
function checkClicks() {
  draw();
  const isFree = ([x, y]) => document.elementFromPoint(x / devicePixelRatio, y / devicePixelRatio) === canvas;
  const middle = ({points: [a, b]}) => [(a[0] + b[0]) / 2, (a[1] + b[1]) / 2];
  const lines = state.items.filter(item => item.name === "lines" && isFree(middle(item))).slice(-50);
  const line = lines.find(item => pick(...middle(item)) === item);
  check("a line can be clicked", line);
  if (line) {
    const [x, y] = middle(line);
    clickAt(x / devicePixelRatio, y / devicePixelRatio);
    const text = panel().textContent;
    check("its fields are shown", !panel().hidden && text.includes("line in lines") && text.includes("delta"), text);
    check("its time stamp is shown", text.includes("time_stamp" + number(line.record.time_stamp) + " s"), text);
    check("and its colour", text.includes("0x" + line.record.color_start.toString(16).toUpperCase().padStart(8, "0")), text);
  }
  const name = state.items.find(item => item.kind === "text" && !item.record.screen_space && isFree(item.points[0]));
  clickAt(name.points[0][0] / devicePixelRatio, (name.points[0][1] - 5) / devicePixelRatio);
  check("a text can be clicked", panel().textContent.includes("text in texts"), panel().textContent);
  clickAt(5, 600);
  check("a click beside all hides the panel", panel().hidden, panel().textContent);
}

function checkRun() {
  check("all frames are there", state.frames.length === 3, state.frames.length);
  check("nothing is wrong", document.getElementById("trouble").hidden);
  check("records are in sight", state.items.length > 500, state.items.length);
  checkCamera();
  checkTime();
  checkToggles();
  checkClicks();
  const loaded = performance.getEntriesByType("resource").map(entry => entry.name).filter(name => !name.startsWith("data:"));
  check("nothing else is loaded", loaded.length === 0, loaded);
}

function checkHostile() {
  check("all frames are there", state.frames.length === 2, state.frames.length);
  check("nothing is wrong", document.getElementById("trouble").hidden);
  const empty = shown();
  key("ArrowRight");
  const begin = performance.now();
  check("what is good is drawn", shown() !== empty);
  check("in a while", performance.now() - begin < 5000, performance.now() - begin);
  for (const name of ["lines", "lines_alternate", "quads", "objects_2d", "texts"]) {
    check(`the good one of ${name} is in sight`, state.items.some(item => item.name === name));
  }
  const inside = ([x, y]) => x >= -1 && y >= -1 && x <= canvas.width + 1 && y <= canvas.height + 1;
  check("lines and faces end at the borders", state.items.every(({kind, points}) =>
    kind === "object" || kind === "text" || points.every(inside)));
  const isWhole = ({kind, record}) => (kind === "quad" ? record.corners.flat()
    : kind === "line" ? [...record.start, ...record.delta] : []).every(Number.isFinite);
  check("what isn't finite is left out", state.items.every(isWhole));
  check("what is drawn is finite", state.items.every(({points}) => points.flat().every(Number.isFinite)));
  const good = state.items.find(item => item.kind === "text" && item.record.text.includes("good"));
  show(good);
  check("a text is shown letter by letter", panel().textContent.includes("<b>good &amp; ä"), panel().textContent);
  const [offset] = state.frames[1].lists[0].slice(1); // not a number in start.x
  show({kind: "line", name: "lines", offset, record: readers.line(offset)});
  check("what isn't a number is told", panel().textContent.includes("NaN 0 0"), panel().textContent);
  checkCamera2();
}

// From anywhere, however close.
function checkCamera2() {
  for (let i = 0; i < 40; ++i) {
    Object.assign(camera, {turn: i, tilt: Math.sin(i) * 1.5, distance: 2 + i * i});
    draw();
  }
  check("no view of it fails", true);
}

function checkDamaged() {
  const trouble = document.getElementById("trouble");
  check("the damage is told", !trouble.hidden && trouble.textContent.includes("damaged"), trouble.textContent);
  check("the frames before it are there", state.frames.length === 2, state.frames.length);
  check("and shown", state.items.length > 500, state.items.length);
}

addEventListener("error", event => check("no error", false, event.message));
ready.then(() => {
  try {
    show(null);
    draw();
    ({run: checkRun, hostile: checkHostile, damaged: checkDamaged})[KIND]();
  } catch (error) {
    check("no exception", false, error.stack);
  }
  const verdict = document.createElement("script");
  verdict.id = "verdict";
  verdict.type = "application/json";
  verdict.textContent = JSON.stringify(findings).replace(/</g, "\\u003c");
  document.body.append(verdict);
});
