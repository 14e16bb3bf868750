// SPDX-License-Identifier: Apache-2.0
// Ratings as a page meets them. CONFIG: path, type; limit (none: there is none); ratings: what the first change tells, "name value
// region" each; blocked: whether it does; error: that it is an error event instead; content, system: as told.

class RatedSubject extends Subject {
  constructor() {
    super();
    this.told = [];
    this.played = false;
    this.object.onParentalRatingChange = (...values) => this.note("change", values);
    this.object.onParentalRatingError = (...values) => this.note("error", values);
  }

  note(kind, values) {
    const [content, ratings, system, blocked] = values;
    const list = [];
    for (let i = 0; i < ratings.length; ++i) {
      const rating = ratings.item(i);
      list.push(`${rating.name} ${rating.value} ${rating.region}`);
    }
    if (this.told.length === 0) this.played = this.states.includes(PLAYING);
    this.told.push({ kind, content, list, system, blocked, count: values.length });
  }
}

runCase(async () => {
  const expected = CONFIG.ratings;
  setParentalLimit(CONFIG.limit);
  const subject = new RatedSubject();
  await subject.open();
  checkEqual(subject.object.play(1), true, "play(1)");
  if (!expected) {
    await subject.expect(CONNECTING, BUFFERING, PLAYING);
    checkEqual(subject.told, [], "what is told of ratings");
    await subject.stop();
    return subject.close();
  }
  await until(() => subject.told.length > 0, () => "a rating event");
  const first = subject.told[0];
  checkEqual(first.kind, CONFIG.error ? "error" : "change", "the event");
  checkEqual(first.list, expected, "the ratings");
  checkEqual(first.count, 4, "the number of arguments");
  checkEqual(first.blocked, CONFIG.error ? undefined : Boolean(CONFIG.blocked), "blocked");
  checkEqual(first.content, CONFIG.content === undefined ? (CONFIG.error ? "" : null) : CONFIG.content, "the content id");
  checkEqual(first.system, CONFIG.system === undefined ? (CONFIG.error ? "" : null) : CONFIG.system, "the system id");
  check(!subject.played, "it is told before it plays");

  if (!CONFIG.blocked) {
    await subject.expect(CONNECTING, BUFFERING, PLAYING);
    await subject.reach(300);
    checkEqual(subject.told.length, 1, "the number of rating events");
    await subject.stop();
    return subject.close();
  }

  await subject.expect(CONNECTING, BUFFERING, PAUSED);
  checkEqual(subject.object.play(1), true, "play(1) while blocked");
  await quietTime(400);
  checkEqual(subject.object.playState, PAUSED, "playState while blocked");
  checkEqual(subject.states, [], "play states while blocked");
  check(subject.position < 300, `it stands still while blocked; it is at ${subject.position}`);

  checkEqual(setParentalLimit(18), true, "setParentalLimit(18)");
  await until(() => subject.told.length === 2, () => "the second rating event");
  checkEqual([subject.told[1].blocked, subject.told[1].list], [false, expected], "what the second event tells");
  checkEqual(subject.object.playState, PAUSED, "playState until the page plays on");
  checkEqual(subject.object.play(1), true, "play(1) with the limit raised");
  await subject.expect(PLAYING);
  await subject.reach(500);

  setParentalLimit(CONFIG.limit);
  await until(() => subject.told.length === 3, () => "the third rating event");
  checkEqual(subject.told[2].blocked, true, "blocked, with the limit lowered");
  await subject.expect(PAUSED);

  await subject.stop();
  subject.object.type = "video/mp4";
  await subject.play("short/two.mp4");
  await subject.reach(300);
  checkEqual(subject.told.length, 3, "rating events of a source without ratings");
  await subject.stop();
  subject.close();
});
