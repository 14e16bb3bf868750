// SPDX-License-Identifier: Apache-2.0
// Subtitles as a viewer sees them: what the example's view has drawn into the page, against the playing clock.

class Viewer extends Subject {
  constructor(type) {
    super(type);
    this.target = document.createElement("div");
    document.body.appendChild(this.target);
    const load = (url, done) => done(url.startsWith(CONFIG.base) ? readFile(CONFIG.media + "/" + url.slice(CONFIG.base.length)) : null);
    this.view = new SubtitleView(this.object, this.target, { width: 1280, height: 720, load });
  }

  get drawn() {
    return this.target.textContent;
  }

  subtitles(language) {
    const list = this.object.getComponents(2);
    const all = Array.from({ length: list.length }, (_, index) => list.item(index));
    return all.find((each) => each.language === language);
  }

  select(language) {
    this.object.selectComponent(this.subtitles(language));
  }

  /// Every second has a text of its own; the sample tracks begin each with their language.
  sees(language) {
    const second = () => Math.floor(this.position / 1000);
    const number = (text) => new RegExp("^" + language + " (\\d+)").exec(text);
    const right = () => {
      const match = number(this.drawn);
      return match !== null && [second(), second() * 1000].includes(Number(match[1]));
    };
    return until(right, () => `${language} at ${this.position}; drawn: "${this.drawn}"`);
  }

  seesNothing() {
    return until(() => this.drawn === "", () => `no subtitles; drawn: "${this.drawn}"`);
  }

  close() {
    this.view.close();
    super.close();
    document.body.removeChild(this.target);
  }
}

function elementsOf(element, name, found = []) {
  if (element.localName === name) found.push(element);
  for (const child of element.children) elementsOf(child, name, found);
  return found;
}

const actions = {
  async stream(subject) {
    await subject.play();
    await subject.reach(300);
    checkEqual(subject.drawn, "", "drawn before subtitles are selected");
    subject.select("eng");
    await subject.sees("eng");
    const before = subject.drawn;
    await until(() => subject.drawn !== before && subject.drawn !== "", () => "the next text");
    await subject.sees("eng");
    subject.object.seek(9300);
    await until(() => subject.position >= 9300 && subject.object.playState === PLAYING, () => "the place that was sought");
    await subject.sees("eng");
    subject.select("deu");
    await subject.sees("deu");
    subject.states.splice(0);
    subject.object.play(0);
    await subject.expect(PAUSED);
    subject.object.seek(4500);
    await until(() => / (4|4000)(?!\d)/.test(subject.drawn), () => `the text of a place that is sought in a pause; drawn: ${subject.drawn}`);
    subject.object.unselectComponent(2);
    await subject.seesNothing();
    subject.select("deu");
    await subject.sees("deu");
    checkEqual(subject.view.problems, 0, "problems");
    subject.states.splice(0);
    await subject.stop();
    await subject.seesNothing();
  },

  /// Documents that the page names itself, over a film.
  async page(subject) {
    for (const language of ["eng", "deu"]) {
      const parameter = document.createElement("param");
      parameter.name = "subtitles";
      parameter.value = "srclang:" + language.toUpperCase() + " src:" + CONFIG.base + "dash/" + language + ".ttml";
      subject.object.appendChild(parameter);
    }
    const started = [];
    subject.object.addEventListener("StartStopSubtitlePlayer", (event) => started.push(event.start));
    await subject.play();
    checkEqual(subject.object.getComponents(2).length, 4, "subtitles of the stream and of the page");
    subject.select("ENG");
    await subject.sees("eng");
    subject.select("DEU");
    await subject.sees("deu");
    subject.select("eng");
    checkBetween(subject.object.ttmlXmlPlayPosition, 0, 20000, "ttmlXmlPlayPosition");
    subject.object.unselectComponent(subject.subtitles("DEU"));
    await until(() => started.length === 3, () => `three words for the subtitle player; came: ${started}`);
    checkEqual(started, [true, true, false], "the subtitle player");
    checkEqual(subject.view.problems, 0, "problems");
    await subject.stop();
  },

  /// An element without media: its clock is what the document follows.
  async alone() {
    const subject = new Viewer("application/ttml+xml");
    subject.view.source = "page";
    subject.view.take(readFile(CONFIG.media + "/dash/eng.ttml"), false);
    checkEqual(subject.object.play(1), true, "play(1)");
    await subject.expect(PLAYING);
    await subject.sees("eng");
    await until(() => subject.drawn === "eng 1", () => `the second text; drawn: ${subject.drawn}`);
    subject.object.play(0);
    await subject.expect(PAUSED);
    const rest = subject.position;
    await quietTime(60);
    checkEqual(subject.position, rest, "position in a pause");
    subject.object.seek(7200);
    await until(() => subject.drawn === "eng 7", () => `the text of the place; drawn: ${subject.drawn}`);
    subject.object.stop();
    await subject.expect(STOPPED);
    checkEqual(subject.position, 0, "position after a stop");
    subject.close();
  },

  async odd(subject) {
    const fonts = [];
    const texts = [];
    subject.object.addEventListener("SubtitleFontFamily", (event) => fonts.push(event.family));
    subject.object.addEventListener("InBandSubtitleData", (event) => texts.push(event.data.length));
    await subject.open();
    subject.object.play(0);
    await until(() => subject.object.getComponents(2).length === 4, () => "subtitles");
    subject.select("ita");
    subject.object.play(1);
    await until(() => /known fonts/.test(subject.drawn), () => `the last text; drawn: ${subject.drawn.slice(0, 50)}`);
    checkEqual(subject.view.problems, 2, "documents that were not drawn: the malformed and the large one");
    checkBetween(Math.max(...texts), 1 << 20, 1 << 21, "the largest text");
    checkEqual(fonts, ["Downloaded", "Embedded", "Offered"], "fonts");
    checkEqual(document.head.children.map((each) => /font-family: "(\w+)"/.exec(each.textContent)[1]), fonts, "rules for fonts");
    subject.states.splice(0);
    await subject.stop();
  },

  /// The command line has: half as large again, yellow on navy.
  async settings(subject) {
    const heard = [];
    subject.object.addEventListener("SubtitleSettingsChanged", (event) => heard.push([event.value, event.text]));
    await until(() => heard.length === 1, () => "the settings of the command line");
    await subject.play();
    checkEqual(heard.length, 2, "once with the object, once with the source");
    for (const each of heard) checkEqual(each, [1, "size=150 color=yellow background=navy"], "settings");
    subject.select("eng");
    await subject.sees("eng");
    const span = () => elementsOf(subject.target, "span")[0];
    checkEqual([span().style.color, span().style.backgroundColor], ["yellow", "navy"], "colours");
    const large = parseFloat(span().style.fontSize);
    checkEqual(changeSubtitleSettings(1, ""), true, "changed while it plays");
    await until(() => heard.length === 3 && span() !== undefined, () => "the change");
    await subject.sees("eng");
    checkEqual(span().style.color, "rgba(255,255,255,1)", "the document's own colour");
    checkBetween(large / parseFloat(span().style.fontSize), 1.49, 1.51, "size");
    changeSubtitleSettings(0, "");
    await subject.seesNothing();
    changeSubtitleSettings(1, "x".repeat(64));
    await subject.sees("eng");
    checkEqual(heard[4], [1, "x".repeat(64)], "the longest text");
    checkEqual(changeSubtitleSettings(1, "x".repeat(65)), false, "a text that is too long");
    await subject.stop();
  },
};

runCase(async () => {
  if (CONFIG.action === "alone") return actions.alone();
  const subject = new Viewer();
  await actions[CONFIG.action](subject);
  subject.close();
});
