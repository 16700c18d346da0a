import { Component } from 'preact';

/** A component that redraws only if one of its props has changed. */
export abstract class Pure<Props extends object> extends Component<Props> {
  override shouldComponentUpdate(next: Props) {
    for (const name in next) if (next[name] !== (this.props as Props)[name]) return true;
    return false;
  }
}
