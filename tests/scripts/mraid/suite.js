// The rich-media script's modules.
import '../harness.js';
import './page.js';
import './calls.test.js';
import './judging.test.js';
