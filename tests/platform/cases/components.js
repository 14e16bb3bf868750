// SPDX-License-Identifier: Apache-2.0
// What a page sees of the tracks, and how it switches between them: CONFIG.action says when. Each language has its own tone, and
// what was heard is judged from the recording.

const VIDEO = 0, AUDIO = 1, SUBTITLE = 2;
const LANGUAGES = CONFIG.languages || ["eng", "deu", "eng"];

const subject = new Subject();
const video = subject.object;
const selected = [];
video.onSelectedComponentChanged = (type) => selected.push(type);

const all = (collection) => Array.from({ length: collection.length }, (_, index) => collection.item(index)).filter(Boolean);
const sounds = () => all(video.getComponents(AUDIO));
const languages = () => sounds().map((sound) => sound.language);
const activeLanguages = () => all(video.getCurrentActiveComponents(AUDIO)).map((sound) => sound.language);
const inLanguage = (language) => sounds().find((sound) => sound.language === language && !sound.audioDescription);
const described = () => sounds().find((sound) => sound.audioDescription);
const changed = (type) => until(() => selected.includes(type), () => `a changed component of type ${type}; came: ${selected}`);

function select(component) {
  video.selectComponent(component);
}

async function active(language) {
  await until(() => activeLanguages().join() === language, () => `${language} to be active; it is ${activeLanguages()}`);
}

/// Plays on for so long that it can be heard.
async function listen() {
  const from = subject.position;
  await until(() => subject.position >= from + 400, () => `400 ms from ${from} on; it is at ${subject.position}`);
}

const actions = {
  async look() {
    await subject.play();
    checkEqual(languages(), LANGUAGES, "languages");
    checkEqual(sounds().map((sound) => sound.audioDescription), [false, false, true], "audioDescription");
    checkEqual(sounds().map((sound) => [sound.type, sound.encrypted, sound.audioChannels, sound.encoding]),
      LANGUAGES.map(() => [AUDIO, false, 2, "mp4a.40.2"]), "the other fields");
    const pictures = all(video.getComponents(VIDEO));
    checkEqual(pictures.length, CONFIG.pictures, "pictures");
    checkBetween(pictures[0].aspectRatio, 1.77, 1.78, "aspectRatio");
    checkEqual(pictures[0].encoding, "avc1.4d401e", "encoding of the picture");
    checkEqual(all(video.getComponents(SUBTITLE)).map((text) => [text.language, text.hearingImpaired]),
      CONFIG.subtitles ? [["eng", false], ["deu", true]] : [], "subtitles");
    checkEqual(activeLanguages(), [LANGUAGES[0]], "the active sound");
    checkEqual(all(video.getCurrentActiveComponents(VIDEO)).length, 1, "active pictures");
    checkEqual(all(video.getCurrentActiveComponents(SUBTITLE)).length, 0, "active subtitles");
    checkEqual(selected, [], "events at the start");
    await listen();
  },
  async playing() {
    await subject.play();
    await listen();
    select(inLanguage("deu"));
    await active("deu");
    await changed(AUDIO);
    await listen();
    select(described());
    await changed(AUDIO);
    await listen();
    select(inLanguage("eng"));
    await active("eng");
    await listen();
  },
  async paused() {
    await subject.play();
    await listen();
    video.play(0);
    await subject.expect(PAUSED);
    select(inLanguage("deu"));
    await active("deu");
    video.play(1);
    await subject.expect(PLAYING);
    await listen();
  },
  /// At any moment of a switch: before the new track is fetched, while it is sought, when it is just there.
  async pausing() {
    await subject.play();
    for (let delay = 0; delay < 64; delay += 4) {
      select(inLanguage(delay % 8 === 0 ? "deu" : "eng"));
      await quietTime(delay);
      video.play(0);
      await until(() => video.playState === PAUSED, () => `a pause ${delay} ms after the selection; the state is ${video.playState}`);
      video.play(1);
      await until(() => video.playState === PLAYING, () => `going on ${delay} ms after the selection; the state is ${video.playState}`);
    }
    await active("eng");
    await listen();
  },
  async before_play() {
    await subject.play();
    await listen();
    const german = inLanguage("deu");
    await subject.stop();
    select(german);  // known from before, and the source is the same
    video.play(1);
    await subject.expect(CONNECTING, BUFFERING, PLAYING);
    await active("deu");
    await listen();
  },
  async seeking() {
    await subject.play();
    await listen();
    const german = inLanguage("deu");
    video.seek(8000);
    select(german);
    await active("deu");
    await subject.expect(BUFFERING, PLAYING);
    await listen();
    checkBetween(subject.position, 8300, 16000, "position");
  },
  async twice() {
    await subject.play();
    await listen();
    const [english, german] = [inLanguage("eng"), inLanguage("deu")];
    select(german);
    select(english);
    select(german);
    await active("deu");
    await listen();
  },
  async silent() {
    await subject.play();
    await listen();
    video.unselectComponent(AUDIO);
    await until(() => activeLanguages().length === 0, () => "no sound");
    await listen();
    select(AUDIO);
    await active(LANGUAGES[0]);
    await listen();
  },
  async preferred() {
    await subject.play();
    checkEqual(languages()[0], "deu", "the first of the list");
    checkEqual(activeLanguages(), ["deu"], "the active sound");
    await listen();
  },
  async active_first() {
    // A page that looks at the active sound before it looks at the list selects the right one all the same.
    await subject.play();
    const english = video.getCurrentActiveComponents(AUDIO).item(0);
    await listen();
    select(inLanguage("deu"));
    await active("deu");
    await listen();
    select(english);
    await active("eng");
    await listen();
  },
  async active_again() {
    // What is known of a sound grows when it is first heard. A page that looks at it then can still select each of them.
    video.addEventListener("SelectedComponentChanged", () => activeLanguages());
    await subject.play();
    const [english, german] = [inLanguage("eng"), inLanguage("deu")];
    await listen();
    select(german);
    await active("deu");
    checkEqual(video.getCurrentActiveComponents(AUDIO).item(0).audioChannels, german.audioChannels, "audioChannels told before");
    await listen();
    select(english);
    await active("eng");
    await listen();
    select(inLanguage("deu"));
    await active("deu");
    await listen();
    checkEqual(video.getCurrentActiveComponents(AUDIO).item(0).audioChannels, 2, "audioChannels once they are known");
    select(english);
    await active("eng");
    await listen();
    select(german);
    await active("deu");
    await listen();
  },
  async subtitles() {
    await subject.play();
    const german = all(video.getComponents(SUBTITLE)).find((text) => text.language === "deu");
    select(german);
    await changed(SUBTITLE);
    checkEqual(all(video.getCurrentActiveComponents(SUBTITLE)).map((text) => text.language), ["deu"], "active subtitles");
    checkEqual(video.enableSubtitles, 1, "enableSubtitles");
    video.unselectComponent(german);
    await until(() => video.getCurrentActiveComponents(SUBTITLE).length === 0, () => "no active subtitles");
    await listen();
  },
  async no_sound() {
    await subject.play();
    checkEqual(sounds().length, 0, "sounds");
    checkEqual(activeLanguages(), [], "active sounds");
    select(AUDIO);
    video.unselectComponent(AUDIO);
    await subject.expect(FINISHED);
  },
  async periods() {
    await subject.play();
    await listen();
    checkEqual(languages(), ["eng", "deu"], "languages of the first period");
    select(inLanguage("deu"));
    await active("deu");
    await until(() => languages().join() === "deu,fra", () => `the second period's languages; they are ${languages()}`);
    checkEqual(activeLanguages(), ["deu"], "the active sound of the second period");
    await listen();
    select(inLanguage("fra"));
    await active("fra");
    await listen();
  },
};

runCase(async () => {
  await actions[CONFIG.action]();
  if (!["no_sound"].includes(CONFIG.action)) subject.states = [];
  subject.close();
});
