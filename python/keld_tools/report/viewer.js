// The part in three dimensions: reads the page's data, draws it with three.js, answers the pointer.
// Shape = point + times * shift on the graphics card, so that the slider moves 250,000 triangles at once. Where a frame
// takes long (no graphics card), a part in motion has fewer triangles and pixels; it comes to rest with all of them.
'use strict';
(function () {
  const data = JSON.parse(document.getElementById('data').textContent);
  const get = (id) => document.getElementById(id);
  const stage = get('stage');
  function decoded(text, Kind) {
    const raw = atob(text), bytes = new Uint8Array(raw.length);
    for (let i = 0; i < raw.length; ++i) bytes[i] = raw.charCodeAt(i);
    return new Kind(bytes.buffer);
  }
  const points = decoded(data.points, Float32Array), triangles = decoded(data.triangles, Uint32Array);
  const edges = decoded(data.edges, Uint32Array), vectors = {}, scalars = {};
  for (const name in data.vectors) vectors[name] = decoded(data.vectors[name], Float32Array);
  for (const name in data.scalars) scalars[name] = decoded(data.scalars[name], Float32Array);
  const count = points.length / 3;
  const used = new Uint8Array(count);
  for (let i = 0; i < triangles.length; ++i) used[triangles[i]] = 1;

  let renderer;
  try {
    renderer = new THREE.WebGLRenderer({ antialias: false });  // two pixels for one do it, and can be left out
  } catch (error) {
    stage.innerHTML = '<div id="trouble">This browser draws nothing in three dimensions (WebGL is off); the views below show the part.</div>';
    return;
  }
  const canvas = renderer.domElement;
  stage.insertBefore(canvas, stage.firstChild);
  renderer.setClearColor(0xffffff);
  const COARSE = 24000, LONG = 30, REST = 200, FINER = 2;  // triangles, ms of a frame, ms until at rest, pixels

  // The view: the part fills it from the first moment on.
  const box = new THREE.Box3().setFromArray(data.box), middle = box.getCenter(new THREE.Vector3());
  const extent = box.getSize(new THREE.Vector3()).length() || 1;
  const camera = new THREE.OrthographicCamera(-1, 1, 1, -1, -20 * extent, 20 * extent);
  camera.up.set(0, 0, 1);
  const controls = new THREE.OrbitControls(camera, canvas);
  controls.target.copy(middle);
  controls.screenSpacePanning = true;
  function look(x, y, z) {
    camera.position.copy(middle).add(new THREE.Vector3(x, y, z).normalize().multiplyScalar(extent));
    controls.target.copy(middle);
    controls.update();
    camera.updateMatrixWorld();
    let wide = 0, high = 0;  // of the box as seen from here
    for (let corner = 0; corner < 8; ++corner) {
      const at = new THREE.Vector3(...[0, 1, 2].map((i) => data.box[i + (corner >> i & 1) * 3])).applyMatrix4(camera.matrixWorldInverse);
      wide = Math.max(wide, Math.abs(at.x));
      high = Math.max(high, Math.abs(at.y));
    }
    camera.zoom = 0.8 * Math.min(camera.right / wide, camera.top / high);
    camera.updateProjectionMatrix();
    redraw();
  }

  // Colours: one row of a texture, the same that the bar shows.
  const colours = new Uint8Array(decoded(data.colours, Uint8Array));
  const texture = new THREE.DataTexture(colours, colours.length / 4, 1, THREE.RGBAFormat);
  texture.magFilter = texture.minFilter = THREE.NearestFilter;
  texture.needsUpdate = true;
  const shared = { times: { value: 1 }, plane: { value: new THREE.Vector4(0, 0, 0, 1) } };
  const moved = 'attribute vec3 shift; uniform float times; varying vec3 place;\n';
  const cut = 'uniform vec4 plane; varying vec3 place;\n';
  const skin = new THREE.ShaderMaterial({
    uniforms: Object.assign({ bar: { value: texture }, low: { value: 0 }, span: { value: 1 }, shade: { value: 1 } }, shared),
    side: THREE.DoubleSide, polygonOffset: true, polygonOffsetFactor: 2, polygonOffsetUnits: 4,
    extensions: { derivatives: true },
    vertexShader: moved + 'attribute float value; varying float v; varying vec3 seen;' +
      'void main() { place = position + times * shift; v = value; vec4 p = modelViewMatrix * vec4(place, 1.0);' +
      'seen = p.xyz; gl_Position = projectionMatrix * p; }',
    fragmentShader: cut + 'uniform sampler2D bar; uniform float low, span, shade; varying float v; varying vec3 seen;' +
      'void main() { if (dot(place, plane.xyz) > plane.w) discard;' +
      'vec3 n = normalize(cross(dFdx(seen), dFdy(seen)));' +
      'float light = mix(1.0, 0.72 + 0.28 * abs(dot(n, normalize(vec3(0.25, 0.45, 0.86)))), shade);' +
      'gl_FragColor = vec4(texture2D(bar, vec2(clamp((v - low) / span, 0.002, 0.998), 0.5)).rgb * light, 1.0); }'
  });
  const lineMaterial = (colour, still, aside) => new THREE.ShaderMaterial({
    uniforms: { colour: { value: new THREE.Color(colour) }, times: still ? { value: 0 } : shared.times, plane: shared.plane, aside },
    vertexShader: moved + 'uniform vec2 aside; void main() { place = position + times * shift;' +
      'gl_Position = projectionMatrix * modelViewMatrix * vec4(place, 1.0) + vec4(aside, 0.0, 0.0); }',
    fragmentShader: cut + 'uniform vec3 colour; void main() { if (dot(place, plane.xyz) > plane.w) discard; gl_FragColor = vec4(colour, 1.0); }'
  });
  const position = new THREE.BufferAttribute(points, 3), shift = new THREE.BufferAttribute(new Float32Array(points.length), 3);
  const value = new THREE.BufferAttribute(new Float32Array(count), 1);
  function geometry(index) {
    const made = new THREE.BufferGeometry();
    made.setAttribute('position', position);
    made.setAttribute('shift', shift);
    made.setAttribute('value', value);
    made.setIndex(new THREE.BufferAttribute(index, 1));
    return made;
  }
  const scene = new THREE.Scene();
  // A line is one pixel wide, of two for one; so each stands again aside by one and above by one.
  const none = { value: new THREE.Vector2() }, aside = { value: new THREE.Vector2() }, above = { value: new THREE.Vector2() };
  const lines = (colour, still, by) => new THREE.LineSegments(geometry(edges), lineMaterial(colour, still, by));
  const outlines = [none, aside, above].map((by) => lines(0x9aa3ad, true, by));
  const folds = [none, aside, above].map((by) => lines(0x111111, false, by));
  const whole = geometry(triangles), part = new THREE.Mesh(whole, skin);
  for (const object of [part, ...folds, ...outlines]) {
    object.frustumCulled = false;
    scene.add(object);
  }

  // One field at a time: its values, its bar, its shift.
  let low = 0, high = 1, times = 1;
  const digits = (x) => Number(x).toPrecision(4);
  function choose() {
    const field = data.fields[get('field').value], vector = vectors[field.vector];
    shift.array.set(vector);
    shift.needsUpdate = true;
    low = Infinity; high = -Infinity;
    for (let i = 0; i < count; ++i) {
      const a = vector[3 * i], b = vector[3 * i + 1], c = vector[3 * i + 2];
      const v = field.scalar ? scalars[field.scalar][i] : field.component === null ? Math.sqrt(a * a + b * b + c * c) : vector[3 * i + field.component];
      value.array[i] = v;
      if (used[i] && v < low) low = v;
      if (used[i] && v > high) high = v;
    }
    value.needsUpdate = true;
    const constant = !(high - low > 1e-6 * Math.max(Math.abs(low), Math.abs(high), 1e-6));
    skin.uniforms.low.value = constant ? low - 0.5 : low;
    skin.uniforms.span.value = constant ? 1 : high - low;
    get('unit').textContent = field.words + ' [mm]';
    get('ticks').innerHTML = '';
    for (let k = 0; k <= 8; ++k) {
      if (constant && k !== 4) continue;
      const tick = document.createElement('span');
      tick.style.top = 100 - 12.5 * k + '%';
      tick.textContent = digits(low + (high - low) * k / 8);
      get('ticks').appendChild(tick);
    }
    const pixels = get('bar').getContext('2d').createImageData(1, 256), n = colours.length / 4;
    for (let y = 0; y < 256; ++y) {
      const c = constant ? Math.floor(n / 2) : Math.min(n - 1, Math.floor((255 - y) / 256 * n));
      pixels.data.set([colours[4 * c], colours[4 * c + 1], colours[4 * c + 2], 255], 4 * y);
    }
    get('bar').getContext('2d').putImageData(pixels, 0, 0);
    redraw();
  }
  function exaggerate() {
    times = shared.times.value = data.most * get('times').value / 1000;
    get('told').textContent = times.toPrecision(3) + ' times';
    move();
  }
  function slice() {
    const axis = get('cut').value, plane = shared.plane.value;
    plane.set(0, 0, 0, 1);
    if (axis !== '') {
      const at = data.box[+axis] + (data.box[3 + +axis] - data.box[+axis]) * (get('depth').value / 1000 * 1.02 - 0.01);
      plane.setComponent(+axis, 1);
      plane.w = at;
    }
    move();
  }

  // Where a node is on the screen, and what lies under a pixel.
  const spot = new THREE.Vector3();
  function placeOf(node, out) {
    const s = shift.array;
    return out.set(points[3 * node] + times * s[3 * node], points[3 * node + 1] + times * s[3 * node + 1], points[3 * node + 2] + times * s[3 * node + 2]);
  }
  function screenOf(node) {
    placeOf(node, spot).project(camera);
    return { x: (spot.x + 1) / 2 * canvas.clientWidth, y: (1 - spot.y) / 2 * canvas.clientHeight };
  }
  // Moeller and Trumbore, J. Graphics Tools 2 (1997) 21-28, over all triangles; the nearest corner of the nearest one.
  function nodeAt(x, y) {
    const ray = new THREE.Raycaster(), s = shift.array, plane = shared.plane.value;
    ray.setFromCamera({ x: 2 * x / canvas.clientWidth - 1, y: 1 - 2 * y / canvas.clientHeight }, camera);
    const o = ray.ray.origin, d = ray.ray.direction;
    let best = Infinity, hit = -1;
    for (let t = 0; t < triangles.length; t += 3) {
      const i = 3 * triangles[t], j = 3 * triangles[t + 1], k = 3 * triangles[t + 2];
      const ax = points[i] + times * s[i], ay = points[i + 1] + times * s[i + 1], az = points[i + 2] + times * s[i + 2];
      const ux = points[j] + times * s[j] - ax, uy = points[j + 1] + times * s[j + 1] - ay, uz = points[j + 2] + times * s[j + 2] - az;
      const vx = points[k] + times * s[k] - ax, vy = points[k + 1] + times * s[k + 1] - ay, vz = points[k + 2] + times * s[k + 2] - az;
      const px = d.y * vz - d.z * vy, py = d.z * vx - d.x * vz, pz = d.x * vy - d.y * vx;
      const det = ux * px + uy * py + uz * pz;
      if (Math.abs(det) < 1e-30) continue;
      const tx = o.x - ax, ty = o.y - ay, tz = o.z - az, a = (tx * px + ty * py + tz * pz) / det;
      if (a < 0 || a > 1) continue;
      const qx = ty * uz - tz * uy, qy = tz * ux - tx * uz, qz = tx * uy - ty * ux, b = (d.x * qx + d.y * qy + d.z * qz) / det;
      if (b < 0 || a + b > 1) continue;
      const far = (vx * qx + vy * qy + vz * qz) / det;
      if (far >= best || (o.x + far * d.x) * plane.x + (o.y + far * d.y) * plane.y + (o.z + far * d.z) * plane.z > plane.w) continue;
      best = far;
      hit = a > 0.5 ? t + 1 : b > 0.5 ? t + 2 : a < 1 - a - b && b < 1 - a - b ? t : a > b ? t + 1 : t + 2;
    }
    return hit < 0 ? -1 : triangles[hit];
  }
  function tell(node) {
    get('pick').dataset.node = node < 0 ? '' : node + 1;
    if (node < 0) { get('pick').textContent = 'point at the part'; return; }
    const at = (array) => [0, 1, 2].map((i) => digits(array[3 * node + i])).join('  ');
    const lines = ['node ' + (node + 1) + '  at ' + at(points) + ' mm', get('unit').textContent.replace(' [mm]', '') + ': ' + digits(value.array[node]) + ' mm'];
    for (const [name, words] of data.told) lines.push(words + ': ' + (vectors[name] ? at(vectors[name]) : digits(scalars[name][node])) + ' mm');
    get('pick').textContent = lines.join('\n');
  }

  // Labels: measures with their places, boundary nodes, gates.
  const level = {};
  const labels = data.labels.map((label) => {
    level[label.node] = 1 + (label.node in level ? level[label.node] : -1);
    const made = document.createElement('div');
    made.className = 'place ' + label.kind;
    made.textContent = label.text;
    stage.appendChild(made);
    return { made, label, lift: 20 * level[label.node] };
  });
  function placeLabels() {
    for (const { made, label, lift } of labels) {
      const at = screenOf(label.node);
      made.style.display = get('places').checked ? '' : 'none';
      made.style.transform = 'translate(' + Math.round(at.x + 6) + 'px,' + Math.round(at.y - 8 - lift) + 'px)';
    }
  }

  // About `most` triangles over the nodes of all: one node stands for those of its cell, one of an edge first.
  function coarsened(most) {
    let area = 0;
    const a = new THREE.Vector3(), b = new THREE.Vector3(), c = new THREE.Vector3();
    for (let t = 0; t < triangles.length; t += 3) {
      a.fromArray(points, 3 * triangles[t]);
      area += b.fromArray(points, 3 * triangles[t + 1]).sub(a).cross(c.fromArray(points, 3 * triangles[t + 2]).sub(a)).length();
    }
    const cell = Math.max(Math.sqrt(area / most), extent / 1e5), first = new Map(), stands = new Uint32Array(count);
    const place = (node) => [0, 1, 2].reduce((key, i) => key * 131072 + Math.floor((points[3 * node + i] - data.box[i]) / cell), 0);
    const enter = (node) => {
      const key = place(node);
      if (!first.has(key)) first.set(key, node);
      stands[node] = first.get(key);
    };
    edges.forEach(enter);
    for (let node = 0; node < count; ++node) if (used[node]) enter(node);
    const kept = [];
    for (let t = 0; t < triangles.length; t += 3) {
      const i = stands[triangles[t]], j = stands[triangles[t + 1]], k = stands[triangles[t + 2]];
      if (i !== j && j !== k && k !== i) kept.push(i, j, k);
    }
    return new Uint32Array(kept);
  }
  function drawn() {
    renderer.render(scene, camera);
    const gl = renderer.getContext();
    gl.readPixels(0, 0, 1, 1, gl.RGBA, gl.UNSIGNED_BYTE, new Uint8Array(4));  // waits until all is drawn
    return performance.now();
  }

  let waiting = false, moving = null, slow = false, rough = null;
  function redraw() {
    if (waiting) return;
    waiting = true;
    requestAnimationFrame(() => {
      waiting = false;
      skin.uniforms.shade.value = get('shading').checked ? 1 : 0;
      const ratio = slow && moving ? 1 : FINER;
      if (renderer.getPixelRatio() !== ratio) renderer.setPixelRatio(ratio);
      folds.forEach((line, i) => { line.visible = !i || ratio > 1; });
      outlines.forEach((line, i) => { line.visible = (!i || ratio > 1) && get('outline').checked; });
      aside.value.x = 2 / (canvas.clientWidth * ratio);
      above.value.y = 2 / (canvas.clientHeight * ratio);
      part.geometry = slow && moving && rough ? rough : whole;
      renderer.render(scene, camera);
      placeLabels();
      stage.dataset.frames = +(stage.dataset.frames || 0) + 1;
    });
  }
  function hurry(most) {
    slow = true;
    if (triangles.length > 3 * most) rough = geometry(coarsened(most));
  }
  function move() {
    clearTimeout(moving);
    moving = setTimeout(() => { moving = null; redraw(); }, REST);
    redraw();
  }
  function fit() {
    const width = stage.clientWidth, height = stage.clientHeight, half = 0.62 * extent * 0.9;
    renderer.setSize(width, height);
    camera.left = -half * width / height; camera.right = -camera.left; camera.top = half; camera.bottom = -half;
    if (width < height) { camera.left = -half; camera.right = half; camera.top = half * height / width; camera.bottom = -camera.top; }
    camera.updateProjectionMatrix();
    redraw();
  }

  data.fields.forEach((field, i) => get('field').add(new Option(field.words, i)));
  for (const [name, eye] of data.views) {
    const button = document.createElement('button');
    button.textContent = name;
    button.onclick = () => look(...eye);
    get('views').append(button, ' ');
  }
  get('times').value = Math.round(1000 * data.start / data.most);
  get('field').onchange = choose;
  get('times').oninput = exaggerate;
  get('cut').onchange = get('depth').oninput = slice;
  for (const id of ['outline', 'places', 'shading']) get(id).onchange = redraw;
  document.querySelectorAll('tr[data-places]').forEach((row) => row.addEventListener('click', () => {
    labels.forEach(({ made, label }) => { made.style.outline = label.row === +row.dataset.places ? '3px solid #f0a000' : ''; });
    stage.scrollIntoView({ block: 'nearest' });
  }));
  let pointer = null;
  canvas.addEventListener('pointermove', (event) => {
    if (pointer === null) requestAnimationFrame(() => { const p = pointer; pointer = null; if (!p.buttons) tell(nodeAt(p.x, p.y)); });
    const at = canvas.getBoundingClientRect();
    pointer = { x: event.clientX - at.left, y: event.clientY - at.top, buttons: event.buttons };
  });
  controls.addEventListener('change', move);
  window.addEventListener('resize', fit);
  fit();
  exaggerate();
  choose();
  look(...data.views[0][1]);
  const start = drawn();
  if (drawn() - start > LONG) hurry(COARSE);
  window.keldReport = { screenOf, nodeAt, coarsened, hurry };
  stage.dataset.ready = '1';
})();
