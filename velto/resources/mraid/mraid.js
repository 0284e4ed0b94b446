// The page's side of rich media: window.mraid and window.MRAID_ENV after the public MRAID 2.0 and 3.0 standards.
//
// Put into every document of an ad's main frame before any script of the page. The host speaks to it in single
// statements, the setters and fireEvent() at the end of this file; it speaks to the host in command URLs,
// mraid://<command>?<name>=<argument>. Whatever a creative does wrong is judged here and told to its "error"
// listeners, since the host drops what it does not like without a word.
import { eventFault } from './calendar.js';
import { copy, isNumber, isObject, isOneOf, isText, merge } from './values.js';

(function () {
  if (window.mraid) return;

  var STATES = ['loading', 'default', 'expanded', 'resized', 'hidden'];
  var EVENTS = ['error', 'ready', 'sizeChange', 'stateChange', 'exposureChange', 'audioVolumeChange', 'viewableChange'];
  var CLOSE_POSITIONS = ['top-left', 'top-center', 'top-right', 'center', 'bottom-left', 'bottom-center', 'bottom-right'];
  var LEAST_SIZE = 50; // of a close region, and so of a resized ad

  // Taken before the page can replace them.
  var later = window.setTimeout.bind(window);
  var notLater = window.clearTimeout.bind(window);
  var stringify = JSON.stringify;
  var encode = encodeURIComponent;

  var listeners = {};
  var version = '2.0';
  var state = 'loading';
  var placement = 'unknown';
  var viewable = false;
  var supported = {};
  var location = -1;
  var screenSize = { width: 0, height: 0 };
  var maxSize = { width: 0, height: 0 };
  var currentPosition = { x: 0, y: 0, width: 0, height: 0 };
  var defaultPosition = { x: 0, y: 0, width: 0, height: 0 };
  var hostPosition = defaultPosition; // the default position as the host told it: within the banner, at first
  var expandProperties = { useCustomClose: false, isModal: true };
  var orientationProperties = { allowOrientationChange: true, forceOrientation: 'none' };
  var resizeProperties = null; // the last that were whole and right
  var resizeDraft = { customClosePosition: 'top-right', allowOffscreen: true }; // all that was given of the right kind
  var resizeWrong = null; // what is wrong with it, once something was given
  var turnedEarly = false; // orientation properties were set before the host knew what kind of ad this is
  var flat = null; // screen and maximum size before the ad expanded

  // --- listeners

  // A listener that throws stops no other; the page's own error handling hears of it.
  function tell(event, args) {
    (listeners[event] || []).slice().forEach((listener) => {
      try {
        listener.apply(null, args);
      } catch (error) {
        later(() => {
          var message = String(error);
          window.dispatchEvent(new ErrorEvent('error', { message: message, error: error, lineno: error && error.line }));
        }, 0);
      }
    });
  }

  var action = null; // the method that a creative has called

  function fail(message) {
    tell('error', [message, action]);
  }

  // --- commands

  // Messages keep their order, none is lost, and the page is not asked for leave to be left. Where the engine has
  // no such messages a hidden frame goes to the address: a navigation of the page itself would cut it off while it
  // is being parsed, and of several in a row only the last would come.
  var handlers = window.webkit && window.webkit.messageHandlers;
  var channel = handlers && handlers.veltoNavigation;
  var post = channel && channel.postMessage.bind(channel);

  function send(command, name, argument) {
    var address = 'mraid://' + command + (name ? '?' + name + '=' + encode(argument) : '');
    if (post) return void post(address);
    var frame = document.createElement('iframe');
    frame.style.cssText = 'display:none';
    frame.src = address;
    (document.body || document.documentElement).appendChild(frame);
    later(() => {
      frame.remove();
    }, 0);
  }

  // The method that runs this when a creative calls it. Nothing is thrown into the creative: an argument that cannot
  // be read, such as one with cycles or with getters that throw, is an error like any other.
  function guarded(name, work) {
    return function () {
      var outer = action; // a listener of an error may call the next method
      action = name;
      try {
        return work.apply(null, arguments);
      } catch (error) {
        fail('The arguments cannot be used.');
      } finally {
        action = outer;
      }
    };
  }

  // What the host fetches must say where from; what it opens, such as "shop.example", may leave the scheme to it.
  function absolute(address) {
    try {
      return /^[a-z][\w+.-]*:/i.test(address) ? address : new URL(address, document.baseURI).href;
    } catch (error) {
      return address; // a page without base
    }
  }

  function sendAddress(command, address) {
    if (isText(address)) send(command, 'url', command === 'open' ? address : absolute(address));
    else fail(command + '() needs a URL.');
  }

  // --- changes

  // The host tells one change in several statements. They are gathered: all values are in place before the first
  // listener hears of any. `last` is the statement that ends the change; should it not come, a moment's silence does.
  var isReady = false;
  var last = null;
  var silence = 0;
  var news = [];
  var told = {};

  function begin(statement) {
    if (last || !isReady) return;
    last = statement;
    silence = later(flush, 50);
  }

  function note(event) {
    if (!isOneOf(event, news)) news.push(event);
  }

  // Nobody hears of anything before the page is ready.
  function end(statement) {
    if (isReady ? !last || last === statement : statement === 'ready') flush();
  }

  function flush() {
    notLater(silence);
    last = null;
    var events = news;
    news = [];
    showClose();
    if (isOneOf('ready', events) && !isReady) {
      isReady = true;
      if (turnedEarly) sendOrientationProperties();
      tell('ready', []);
    }
    events.forEach((event) => {
      if (announce[event]) announce[event](event);
    });
    release();
  }

  // Between a command that changes the state and the host's word that it did, what follows is judged by the state to
  // come; what would only be dropped until then waits for it.
  var coming = null;
  var comingTimer = 0;
  var waiting = null;

  function now() {
    return coming || state;
  }

  function expectState(value) {
    coming = value;
    notLater(comingTimer);
    comingTimer = later(() => {
      coming = null;
      release();
    }, 1000);
  }

  function release() {
    var call = coming ? null : waiting;
    if (!call) return;
    waiting = null;
    call();
  }

  // The arguments of the event, unless its listeners know them already.
  function announceWhenNew(values) {
    return (event) => {
      var args = values();
      var text = stringify(args);
      if (told[event] === text) return;
      told[event] = text;
      tell(event, args);
    };
  }

  var size = null;
  var exposure = null;
  var volume = null;
  told.stateChange = stringify([state]);
  told.viewableChange = stringify([viewable]);
  var announce = {
    stateChange: announceWhenNew(() => [state]),
    viewableChange: announceWhenNew(() => [viewable]),
    sizeChange: announceWhenNew(() => [size.width, size.height]),
    exposureChange: announceWhenNew(() => [exposure.exposedPercentage, exposure.visibleRectangle, exposure.occlusionRectangles]),
    audioVolumeChange: announceWhenNew(() => [volume]),
  };

  // --- the close indicator

  // An expanded ad shows where it can be closed, unless its creative draws that itself. The host has a touch area
  // there and paints nothing; for a creative that gave expand properties it has not even that.
  var indicator = null;

  function showClose() {
    var shown = state === 'expanded' && placement !== 'interstitial' && !expandProperties.useCustomClose;
    if (!shown) {
      if (indicator) indicator.remove();
      return;
    }
    if (!indicator) {
      indicator = document.createElement('div');
      indicator.style.cssText =
        'all:initial;position:fixed;top:0;right:0;width:50px;height:50px;z-index:2147483647;cursor:pointer';
      var mark = document.createElement('div');
      mark.textContent = '\u00d7';
      mark.style.cssText =
        'position:absolute;top:10px;right:10px;width:30px;height:30px;border-radius:15px;background:rgba(0,0,0,.7);' +
        'box-shadow:0 0 0 2px #fff;color:#fff;font:24px/30px sans-serif;text-align:center';
      (indicator.attachShadow ? indicator.attachShadow({ mode: 'closed' }) : indicator).appendChild(mark);
      indicator.addEventListener(
        'click',
        (event) => {
          event.stopPropagation();
          mraid.close();
        },
        true
      );
    }
    if (!indicator.parentNode && document.documentElement) document.documentElement.appendChild(indicator);
  }

  // --- judging

  // What is wrong with resize properties, or nothing.
  function resizeFault(properties) {
    var names = ['width', 'height', 'offsetX', 'offsetY'];
    for (var i = 0; i < names.length; ++i) {
      if (properties[names[i]] === undefined) return names[i] + ' is missing.';
      if (!isNumber(properties[names[i]])) return names[i] + ' is not a number.';
    }
    if (properties.width < LEAST_SIZE || properties.height < LEAST_SIZE)
      return 'width and height must be at least ' + LEAST_SIZE + '.';
    if (!isOneOf(properties.customClosePosition, CLOSE_POSITIONS)) return 'customClosePosition is unknown.';
    if (typeof properties.allowOffscreen !== 'boolean') return 'allowOffscreen is not a boolean.';
    var isKnown = maxSize.width > 0 && maxSize.height > 0;
    if (isKnown && !properties.allowOffscreen && isLargerThan(properties, maxSize))
      return 'width and height must not exceed the maximum size when allowOffscreen is false.';
  }

  function isLargerThan(one, other) {
    return one.width > other.width || one.height > other.height;
  }

  // Whether the touch area for closing would lie on the screen, all of it: where the host puts resized ads, at the
  // bottom and in the middle, and where the page asked for it. Until it first changed its size the page does not know
  // where on the screen it stands; then any place that it could have will do.
  function closeRegionIsOnScreen(properties) {
    var words = properties.customClosePosition.split('-');
    var right = properties.width - LEAST_SIZE;
    var bottom = properties.height - LEAST_SIZE;
    var dx = isOneOf('left', words) ? 0 : isOneOf('right', words) ? right : right / 2;
    var dy = isOneOf('top', words) ? 0 : isOneOf('bottom', words) ? bottom : bottom / 2;
    function isIn(x, y, slackX, slackY) {
      return x + slackX >= 0 && y + slackY >= 0 && x + LEAST_SIZE <= maxSize.width && y + LEAST_SIZE <= maxSize.height;
    }
    if (!isIn((maxSize.width - properties.width) / 2 + dx, maxSize.height - properties.height + dy, 0, 0)) return false;
    var isKnown = defaultPosition !== hostPosition;
    return isIn(
      defaultPosition.x + properties.offsetX + dx,
      defaultPosition.y + properties.offsetY + dy,
      isKnown ? 0 : Math.max(0, maxSize.width - defaultPosition.width),
      isKnown ? 0 : Math.max(0, maxSize.height - defaultPosition.height)
    );
  }

  // The host's own test of offscreen resizes counts the close region from its far edge and refuses, say, one that is
  // as wide as the screen. True when it would refuse.
  function hostRefuses(properties) {
    function isOutside(value, least, most) {
      return value < least || value > most;
    }
    var position = properties.customClosePosition;
    var x = hostPosition.x + properties.offsetX; // the view's place in its banner, which does not change
    var y = hostPosition.y + properties.offsetY;
    var lowest = maxSize.height - LEAST_SIZE;
    var rightmost = maxSize.width - LEAST_SIZE;
    if (/top/.test(position)) {
      if (isOutside(y, 0, lowest)) return true;
    } else if (/bottom/.test(position) && isOutside(y + properties.height, LEAST_SIZE, lowest)) {
      return true;
    }
    if (/right/.test(position)) return isOutside(x + properties.width, LEAST_SIZE, rightmost);
    return /left/.test(position) && isOutside(x, 0, rightmost);
  }

  // --- what creatives call

  // Made into methods below, see guarded().
  var methods = {
    getVersion: () => version,
    getState: () => state,
    getPlacementType: () => placement,
    isViewable: () => viewable,
    getCurrentPosition: () => copy(currentPosition),
    getDefaultPosition: () => copy(defaultPosition),
    getMaxSize: () => copy(maxSize),
    getScreenSize: () => copy(screenSize),
    getLocation: () => location === -1 ? -1 : copy(location),
    getCurrentAppOrientation: () => ({ orientation: screenSize.width > screenSize.height ? 'landscape' : 'portrait', locked: false }),
    supports: function (feature) {
      return supported.hasOwnProperty(feature) && supported[feature];
    },

    addEventListener: (event, listener) => {
      if (!isOneOf(event, EVENTS)) return fail('There is no event ' + event + '.');
      if (typeof listener !== 'function') return fail('The listener is not a function.');
      var list = listeners[event] || (listeners[event] = []);
      if (!isOneOf(listener, list)) list.push(listener);
    },
    removeEventListener: (event, listener) => {
      if (!isOneOf(event, EVENTS)) return fail('There is no event ' + event + '.');
      listeners[event] = (listener ? listeners[event] || [] : []).filter((kept) => kept !== listener);
    },

    open: (url) => {
      sendAddress('open', url);
    },
    playVideo: (url) => {
      sendAddress('playVideo', url);
    },
    storePicture: (url) => {
      if (isText(url) && !supported.storePicture) return fail('Pictures cannot be stored here.');
      sendAddress('storePicture', url);
    },
    createCalendarEvent: (event) => {
      if (!isObject(event)) return fail('createCalendarEvent() needs an object.');
      var sent = copy(event);
      var fault = eventFault(sent, event);
      if (fault) return fail(fault);
      if (!supported.calendar) return fail('There is no calendar here.');
      send('createCalendarEvent', 'event', stringify(sent));
    },

    expand: (url) => {
      if (url && !isText(url)) return fail('The URL is not a text.');
      if (now() === 'expanded') return; // it is what it should be
      if (placement === 'interstitial') return fail('An interstitial does not expand.');
      if (now() === 'resized') mraid.close(); // the host expands from the default state only
      if (now() !== 'default') return fail('expand() is not possible in state ' + state + '.');
      if (coming || waiting) return void (waiting = () => mraid.expand(url));
      if (url) send('expand', 'url', absolute(url));
      else send('expand');
      expectState('expanded');
    },
    resize: () => {
      if (placement === 'interstitial') return fail('An interstitial does not resize.');
      if (now() !== 'default' && now() !== 'resized')
        return fail('resize() is not possible in state ' + now() + '.');
      if (resizeWrong) return fail(resizeWrong);
      if (!resizeProperties) return fail('resize() needs setResizeProperties() before.');
      var fault = resizeFault(resizeProperties);
      if (fault) return fail(fault);
      if (resizeProperties.allowOffscreen) {
        if (!closeRegionIsOnScreen(resizeProperties)) return fail('The close region would be off screen.');
        if (hostRefuses(resizeProperties)) sendResizeProperties(merge(copy(resizeProperties), { allowOffscreen: false }));
      }
      if (coming === 'default') return void (waiting = () => mraid.resize());
      send('resize');
      expectState('resized');
    },
    close: () => {
      if (state === 'hidden') return;
      if (coming === 'resized' || coming === 'expanded') return void (waiting = () => mraid.close());
      send('close');
      if (placement !== 'interstitial' && state !== 'default') expectState('default');
    },
    unload: () => {
      send('unload');
    },

    useCustomClose: (useCustomClose) => {
      mraid.setExpandProperties({ useCustomClose: !!useCustomClose });
    },
    getExpandProperties: () => merge({ width: maxSize.width, height: maxSize.height }, expandProperties),
    setExpandProperties: (properties) => {
      if (!isObject(properties)) return fail('setExpandProperties() needs an object.');
      var merged = {};
      ['width', 'height', 'useCustomClose'].forEach((name) => {
        merged[name] = properties[name] === undefined ? expandProperties[name] : properties[name];
      });
      if ((merged.width !== undefined && !isNumber(merged.width)) || (merged.height !== undefined && !isNumber(merged.height)))
        return fail('width and height must be numbers.');
      if (typeof merged.useCustomClose !== 'boolean')
        return fail('useCustomClose is not a boolean.');
      merge(expandProperties, merged);
      showClose();
      send('setExpandProperties', 'properties', stringify(mraid.getExpandProperties()));
    },

    getOrientationProperties: () => copy(orientationProperties),
    setOrientationProperties: (properties) => {
      if (!isObject(properties)) return fail('setOrientationProperties() needs an object.');
      var merged = copy(orientationProperties);
      if (properties.allowOrientationChange !== undefined)
        merged.allowOrientationChange = properties.allowOrientationChange;
      if (properties.forceOrientation !== undefined) merged.forceOrientation = properties.forceOrientation;
      if (typeof merged.allowOrientationChange !== 'boolean')
        return fail('allowOrientationChange is not a boolean.');
      if (!isOneOf(merged.forceOrientation, ['portrait', 'landscape', 'none']))
        return fail('forceOrientation is unknown.');
      orientationProperties = merged;
      turnedEarly = !isReady;
      sendOrientationProperties();
    },

    getResizeProperties: () => copy(resizeDraft),
    setResizeProperties: (properties) => {
      if (!isObject(properties)) return fail('setResizeProperties() needs an object.');
      var merged = copy(resizeDraft);
      ['width', 'height', 'offsetX', 'offsetY', 'customClosePosition', 'allowOffscreen'].forEach((name) => {
        if (properties[name] !== undefined) merged[name] = properties[name];
      });
      resizeWrong = resizeFault(merged);
      // What is only not whole yet is kept, and may be completed.
      if (!resizeWrong || / is missing\.$/.test(resizeWrong)) resizeDraft = merged;
      if (resizeWrong) return fail(resizeWrong);
      resizeProperties = copy(merged);
      sendResizeProperties(merged);
    },
  };

  var mraid = {};
  Object.keys(methods).forEach((name) => {
    mraid[name] = guarded(name, methods[name]);
  });

  function sendOrientationProperties() {
    send('setOrientationProperties', 'properties', stringify(orientationProperties));
  }

  function sendResizeProperties(properties) {
    send('setResizeProperties', 'properties', stringify(properties));
  }

  // --- what the host calls

  mraid.setVersion = (value) => {
    version = value;
  };
  mraid.setSupports = (feature, value) => {
    supported[feature] = value;
    begin('ready');
  };
  mraid.setLocation = (value) => {
    location = value;
  };
  mraid.setMaxSize = (value) => {
    maxSize = value;
  };
  mraid.setScreenSize = (value) => {
    screenSize = value;
    if (isReady && state === 'expanded') maxSize = copy(value);
    // Of a rotation, which is not a change of state.
    if (last === 'setState') last = 'exposureChange';
  };
  mraid.setDefaultPosition = (value) => {
    defaultPosition = hostPosition = value;
    begin('setState');
  };
  mraid.setCurrentPosition = (value) => {
    currentPosition = value;
    begin('setState');
  };
  mraid.setPlacementType = (value) => {
    placement = value;
    begin('setState');
  };
  mraid.setIsViewable = (value) => {
    if (value !== viewable) begin('viewableChange');
    viewable = value;
    note('viewableChange');
    end('setIsViewable');
  };
  mraid.setState = (value) => {
    if (!isOneOf(value, STATES)) return;
    if (value === 'expanded' && state !== value) flat = [screenSize, maxSize];
    if (value === 'default' && isReady) {
      if (state === 'expanded' && flat) {
        screenSize = flat[0];
        maxSize = flat[1];
      }
      // Where the page stands on the screen, told for the first time.
      if (state !== value && placement !== 'interstitial') defaultPosition = copy(currentPosition);
    }
    state = value;
    coming = null;
    note('stateChange');
    if (value === 'hidden') {
      // Not viewable any more is the next that is told.
      exposure = { exposedPercentage: 0, visibleRectangle: null, occlusionRectangles: null };
      note('exposureChange');
      begin('setIsViewable');
    }
    end('setState');
  };
  mraid.fireEvent = (event, value, about) => {
    if (event === 'error') return tell(event, [value, about]);
    if (event === 'sizeChange') size = value;
    if (event === 'viewableChange') viewable = value;
    if (event === 'audioVolumeChange') volume = value && value.volumePercentage;
    if (event === 'exposureChange') {
      exposure = value;
      if (!exposure.exposedPercentage) exposure.visibleRectangle = null;
    }
    note(event);
    end(event);
  };

  // --- the document

  // It cannot be replaced by a script of that name that the page brings along.
  Object.defineProperty(window, 'mraid', {
    get: () => mraid,
    set: () => {},
    enumerable: true,
    configurable: true,
  });
  window.MRAID_ENV = { version: '3.0', sdk: 'Velto', sdkVersion: '4.0.10' };

  // A full-page ad is told of no rotation; it sees its own size.
  window.addEventListener('resize', () => {
    var now = { width: window.innerWidth, height: window.innerHeight };
    if (!isReady || placement !== 'interstitial' || !now.width || !now.height) return;
    if (now.width === currentPosition.width && now.height === currentPosition.height) return;
    if (now.width > now.height !== screenSize.width > screenSize.height)
      screenSize = { width: screenSize.height, height: screenSize.width };
    maxSize = now;
    currentPosition = merge({ x: 0, y: 0 }, now);
    defaultPosition = copy(currentPosition);
    size = now;
    note('sizeChange');
    if (!last) flush();
  });

  // A page that asks for "mraid.js" in a later script tag has it already, wherever the address leads.
  window.addEventListener(
    'error',
    (event) => {
      var script = event.target;
      if (!(script instanceof HTMLScriptElement) || !/(^|\/)mraid\.js([?#]|$)/.test(script.getAttribute('src') || '')) return;
      event.stopImmediatePropagation();
      script.dispatchEvent(new Event('load'));
    },
    true
  );
})();
