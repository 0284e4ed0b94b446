// The rich-media script's modules.
import '../harness.js';
import './calendar.test.js';
